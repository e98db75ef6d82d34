// The test module loaded into this process as the runner loads it: what every registered test class
// promises the runner (its record, its subtest names, the first index past its subtests).

#include "zq3dview/zqrenderunittest.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqunittestfilebasedrecreate.h"
#include "zqmoduletest.h"

#include <dlfcn.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{
class ModuleTest : public ZqModuleTest
{
};

// Whether the record is defined in the test module (this program registers test classes of its own).
bool inModule(const CbRTTI* record)
{
    Dl_info info{};
    return dladdr(record, &info) && std::string(info.dli_fname).ends_with("/libZqUnitTests.so");
}

} // namespace

// A test's record creates an object of its own class and names one parent, the record of the test base
// it derives from (the render tests name the render test base); only the four container tests name
// ZqBenchmark's record as a second parent. Other tests that are benchmarks in C++ (the MD5 test) do not.
TEST_F(ModuleTest, EveryRecordCreatesItsClassAndNamesItsTestBaseAndOnlyContainerTestsTheBenchmark)
{
    const std::set<std::string> benchmarkParents = {"CbArray_UnitTest", "CbList_UnitTest", "CbMap_UnitTest",
                                                    "CbSet_UnitTest"};
    std::set<std::string> seen;
    for (const CbRTTI* record : CbRTTI::GetRegistered())
    {
        if (!record->IsKindOf(ZqUnitTest::RTTI) || !record->CanCreate() || !inModule(record))
            continue;
        const std::string name = CbWideToUtf8(record->GetName());
        SCOPED_TRACE(name);
        std::unique_ptr<IObject> object = CbFactory::Create(record->GetName());
        ASSERT_TRUE(object);
        EXPECT_STREQ(object->GetClassName(), record->GetName());
        EXPECT_TRUE(object->GetRTTI() == *record);
        const CbRTTI* base = &ZqUnitTest::RTTI;
        if (dynamic_cast<ZqRenderUnitTest*>(object.get()))
            base = &ZqRenderUnitTest::RTTI;
        else if (dynamic_cast<ZqUnitTestFileBasedRecreate*>(object.get()))
            base = &ZqUnitTestFileBasedRecreate::RTTI;
        else if (dynamic_cast<ZqUnitTestFileBased*>(object.get()))
            base = &ZqUnitTestFileBased::RTTI;
        const CbRTTI::SBaseClassList* bases = record->GetBaseClassRTTI();
        ASSERT_NE(bases, nullptr);
        const bool benchmarkParent = benchmarkParents.count(name) != 0;
        ASSERT_EQ(bases->count, benchmarkParent ? 2u : 1u);
        EXPECT_EQ(bases->parents[0], base);
        if (benchmarkParent)
        {
            EXPECT_EQ(bases->parents[1], &ZqBenchmark::RTTI);
            EXPECT_NE(dynamic_cast<ZqBenchmark*>(object.get()), nullptr);
            seen.insert(name);
        }
    }
    EXPECT_EQ(seen, benchmarkParents);
}

// The names are the texts that reports, filters and replays know a subtest by; trailing blanks count.
TEST_F(ModuleTest, SubtestsKeepTheirNames)
{
    const std::map<std::wstring, std::vector<std::string>> expected = {
        {L"CbArray_UnitTest",
         {"Benchmark", "Iteration mit Iterator", "Iteration range-based", "Iteration über Bereich",
          "Move-Semantik", "Dynamische Manipulation", "Serialisierung", "ZqArrayDynamicSize", "Array Copies",
          "std-Algorithmen", "std::initializer_list", "Remove", "Riesige Allokation", "Grow"}},
        {L"CbList_UnitTest", {"Unit-Test", "Benchmark"}},
        {L"CbListSort_UnitTest",
         {"Sortieren von verketteten Listen (kurze Listen, Stabilität)",
          "Sortieren von verketteten Listen (lange Listen)", "Zeitmessung, Vergleich zu Bubble-Sort"}},
        {L"CbMap_UnitTest", {"Unit-Test", "Benchmark"}},
        {L"CbQueue_UnitTest", {"Unit-Test"}},
        {L"CbRTTI_UnitTest", {"Unit-Test"}},
        {L"CbSet_UnitTest",
         {"Unit-Test", "Benchmark",
          "Intersection, &=, ==", "Intersect, &, !=", "Union, |=, ==", "Union, |, !=", "Subsets"}},
        {L"CbStr_UnitTest",
         {"Compare / operator ==",
          "CompareNoCase",
          "Delete",
          "Empty",
          "Find / ReverseFind / FindOneOf",
          "Format",
          "GetAt / operator []",
          "GetLength",
          "Insert",
          "IsEmpty",
          "MakeLower / MakeUpper",
          "MakeReverse",
          "Mid / Left / Right",
          "operator =",
          "operator +=",
          "const CharType * operator",
          "Remove",
          "Replace",
          "SetAt",
          "Split",
          "Trim / TrimLeft / TrimRight",
          "Convert"}},
        {L"ZqFtConvexHull2D_UnitTest",
         {"Konvexe Hülle, Test auf Bug mit Umlaufsinn", "Konvexe Hülle, Test auf Bug im Kollinearitäts-Test",
          "Konvexe Hülle von wenigen Punkten (0,1,2)", "Konvexe Hülle von zufälligen Punkten",
          "Konvexe Hülle von zufälligen Punkten (ganzzahlige Koordinaten)",
          "Konvexe Hülle von zufälligen Punkten (verdrehtes Gitter)",
          "Konvexe Hülle, mehrere extremale Punkte mit gleicher x-Koordinate"}},
        {L"ZqMpFitLine2D_UnitTest", {"Unit-Test", "Benchmark"}},
        {L"ZqMpPointsToPrincipalComponents_UnitTest",
         {"Ellipsoidförmige Punktwolke", "Punkte auf einer Geraden", "Punkte in einer Ebene",
          "Weniger als drei Punkte", "Zweimalige Berechnung"}},
        {L"ZqMD5_UnitTest", {"Unit-Test", "Benchmark"}},
        {L"ZqSemanticVersion_UnitTest", {"Unit-Test"}},
        {L"ZqSHA1_UnitTest", {"Unit-Test"}},
        {L"ZqCubicEquation_UnitTest",
         {"01.) Quadratisch 1 Lösung   ", "02.) Quadratisch 2 Lösungen ", "03.) Quadratisch 2 Lösungen ",
          "04.) Quadratisch 0 Lösungen ", "05.) Kubisch 1 Lösung ", "06.) Kubisch 1 Lösung ",
          "07.) Kubisch 2 Lösungen ", "08.) Kubisch 3 Lösungen ", "09.) Affin 1 Lösung ",
          "10.) Konstanz 0 Lösungen "}},
        {L"ZqFloatCompare_UnitTest", {"FloatCompare<float>", "FloatCompare<double>"}},
        {L"ZqLineMinimization_UnitTest", {"Minimum-Test", "Maximum-Test"}},
        {L"ZqPowell_UnitTest", {"Standard-Test", "Bounds-Test", "NoBracketing-Test"}},
        {L"ZqQuadraticEquation_UnitTest", {}},
    };
    for (const auto& [name, subtests] : expected)
    {
        std::unique_ptr<ZqUnitTest> test = create(name.c_str());
        ASSERT_TRUE(test) << CbWideToUtf8(name);
        EXPECT_EQ(names(*test), subtests) << CbWideToUtf8(name);
    }
}

// The first index past the subtests throws from the class's own file, naming the hook, for the classes
// whose contract says so; the others answer it in their own way (the base's default name, eFailed).
TEST_F(ModuleTest, IndexPastTheLastThrowsFromTheClassItself)
{
    struct SContract
    {
        const wchar_t* name;
        bool nameThrows, runThrows;
    };
    const SContract contracts[] = {
        {L"CbArray_UnitTest", true, true},
        {L"CbList_UnitTest", true, true},
        {L"CbListSort_UnitTest", true, true},
        {L"CbMap_UnitTest", true, true},
        {L"CbQueue_UnitTest", true, true},
        {L"CbSet_UnitTest", true, true},
        {L"ZqCubicEquation_UnitTest", true, true},
        {L"ZqFloatCompare_UnitTest", true, true},
        {L"ZqFtConvexHull2D_UnitTest", true, true},
        {L"ZqMD5_UnitTest", true, false},
        {L"ZqMpFitLine2D_UnitTest", true, true},
        {L"ZqMpPointsToPrincipalComponents_UnitTest", true, true},
        {L"ZqPowell_UnitTest", true, true},
        {L"ZqSHA1_UnitTest", false, true},
        {L"ZqSemanticVersion_UnitTest", false, true},
    };
    for (const SContract& contract : contracts)
    {
        std::unique_ptr<ZqUnitTest> test = create(contract.name);
        ASSERT_TRUE(test);
        const std::string name = CbWideToUtf8(contract.name);
        SCOPED_TRACE(name);
        std::string file = name.substr(0, name.find("_UnitTest")) + "_unittest.cpp";
        std::transform(file.begin(), file.end(), file.begin(),
                       [](unsigned char c) { return std::tolower(c); });
        const unsigned int past = test->GetSubtestCount();
        const auto expectThrow = [&](const std::function<void()>& call, const std::string& hook)
        {
            try
            {
                call();
                ADD_FAILURE() << "no exception from " << hook;
            }
            catch (const CbException& e)
            {
                EXPECT_EQ(e.GetFunction(), name + "::" + hook);
                EXPECT_TRUE(std::string(e.GetFile()).ends_with("/" + file)) << e.GetFile();
            }
        };
        if (contract.nameThrows)
            expectThrow([&] { test->GetSubtestName(past); }, "getSubtestName");
        if (contract.runThrows)
            expectThrow([&] { test->RunUnitTest(past); }, "runUnitTest");
        else
            EXPECT_EQ(test->RunUnitTest(past), ZqUnitTest::eFailed);
    }
}
