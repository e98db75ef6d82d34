// Loads the module into this process and runs its type-record test through the registry, as the
// runner does.

#include "zqbase/zqbenchmark.h"
#include "zqbase/zqunittestfilebasedrecreate.h"
#include "zqmoduletest.h"

#include <dlfcn.h>

#include <set>
#include <string>

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

TEST_F(ModuleTest, TypeRecordTestPassesThroughTheFactory)
{
    std::unique_ptr<ZqUnitTest> test = create(L"CbRTTI_UnitTest");
    ASSERT_TRUE(test);
    EXPECT_STREQ(test->GetClassName(), L"CbRTTI_UnitTest");
    ASSERT_EQ(test->GetSubtestCount(), 1u);
    EXPECT_EQ(test->RunUnitTest(0), ZqUnitTest::ePassed);
    for (const auto& message : test->GetMessageStream().Take())
        ADD_FAILURE() << CbWideToUtf8(message.text.Std());
}

TEST_F(ModuleTest, EveryTestClassHasAMatchingNameAndCreates)
{
    int tests = 0;
    for (const CbRTTI* record : CbRTTI::GetRegistered())
    {
        if (!record->IsKindOf(ZqUnitTest::RTTI) || !record->CanCreate())
            continue;
        std::unique_ptr<IObject> object = CbFactory::Create(record->GetName());
        ASSERT_TRUE(object);
        EXPECT_STREQ(object->GetClassName(), record->GetName());
        EXPECT_TRUE(object->GetRTTI() == *record);
        ++tests;
    }
    EXPECT_GT(tests, 0);
}

// A test's record names one parent, the record of the test base it derives from; only the four container
// tests name ZqBenchmark's record as a second parent. Other tests that are benchmarks in C++ (the MD5
// test) do not.
TEST_F(ModuleTest, EveryRecordNamesItsTestBaseAndOnlyTheContainerTestsNameTheBenchmark)
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
        const CbRTTI* base = &ZqUnitTest::RTTI;
        if (dynamic_cast<ZqUnitTestFileBasedRecreate*>(object.get()))
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
