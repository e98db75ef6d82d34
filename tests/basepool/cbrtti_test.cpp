// The type registry and the factory: ancestry through two parents, lookup of unknown and duplicate
// names, records that leave the registry with their destruction, creation of the wrong interface,
// and cloning.

#include "basepool/cbfactory.h"
#include "basepool/cbrtti.h"
#include "zqbase/iunittestrecreate.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqunittest.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>

namespace
{
// Counts its constructions and destructions, to see what the factory destroys.
class Counted : public IObject
{
public:
    static const CbRTTI RTTI;
    static int s_constructed;
    static int s_destroyed;

    Counted() { ++s_constructed; }
    ~Counted() override { ++s_destroyed; }
    const CbRTTI& GetRTTI() const override { return RTTI; }
};
int Counted::s_constructed = 0;
int Counted::s_destroyed = 0;
const CbRTTI Counted::RTTI(
    L"CbRTTITest_Counted", [] { return std::unique_ptr<IObject>(new Counted); }, nullptr);

class Cloneable : public IObject
{
public:
    static const CbRTTI RTTI;
    explicit Cloneable(int value) : m_value(value) {}
    const CbRTTI& GetRTTI() const override { return RTTI; }
    int GetValue() const { return m_value; }

private:
    int m_value;
};
const CbRTTI Cloneable::RTTI(L"CbRTTITest_Cloneable", nullptr,
                             [](const IObject& source) {
                                 return std::unique_ptr<IObject>(
                                     new Cloneable(static_cast<const Cloneable&>(source).GetValue()));
                             });

// A test that is also a benchmark, registered the way the container tests are.
class Benchmarked : public ZqUnitTest, public ZqBenchmark
{
    CB_DECLARE_RTTI(Benchmarked)

protected:
    EResult runUnitTest(unsigned int) override { return RunBenchmark() ? ePassed : eFailed; }
    unsigned int getBenchmarkCount() const override { return 0; }
    CString getBenchmarkName(unsigned int) override { return CString(); }
    unsigned int getIterationCount() const override { return 1; }
    bool runBenchmark(unsigned int, SBenchmarkData&) override { return true; }
    void dump(const CString&) override {}
};
CB_IMPLEMENT_RTTI(Benchmarked, ZqUnitTest::RTTI, ZqBenchmark::RTTI);

// A test that can recreate, for creation through an interface that is not an IObject.
class Recreating : public ZqUnitTest, public IUnitTestRecreate
{
    CB_DECLARE_RTTI(Recreating)

public:
    bool CanRecreate(unsigned int) const override { return true; }
    bool Recreate(unsigned int) override { return true; }

protected:
    EResult runUnitTest(unsigned int) override { return ePassed; }
};
CB_IMPLEMENT_RTTI(Recreating, ZqUnitTest::RTTI);

// An abstract test class: registered, never creatable.
class AbstractBase : public ZqUnitTest
{
    CB_DECLARE_RTTI(AbstractBase)
};
CB_IMPLEMENT_RTTI(AbstractBase, ZqUnitTest::RTTI);
} // namespace

TEST(CbRTTIRegistry, AncestryFollowsBothParentsTransitively)
{
    const CbRTTI root(L"CbRTTITest_Root", nullptr, nullptr);
    const CbRTTI left(L"CbRTTITest_Left", root, nullptr, nullptr);
    const CbRTTI other(L"CbRTTITest_Other", nullptr, nullptr);
    const CbRTTI right(L"CbRTTITest_Right", other, nullptr, nullptr);
    const CbRTTI both(L"CbRTTITest_Both", left, right, nullptr, nullptr);

    for (const CbRTTI* ancestor : {&both, &left, &root, &right, &other})
        EXPECT_TRUE(both.IsKindOf(*ancestor)) << CbWideToUtf8(ancestor->GetName());
    EXPECT_FALSE(left.IsKindOf(other));
    EXPECT_FALSE(root.IsKindOf(left));
    EXPECT_FALSE(both.Is(left));
    EXPECT_TRUE(both != left && !(both == root));

    const CbRTTI::SBaseClassList* bases = both.GetBaseClassRTTI();
    ASSERT_NE(bases, nullptr);
    ASSERT_EQ(bases->count, 2u);
    EXPECT_EQ(bases->parents[0], &left);
    EXPECT_EQ(bases->parents[1], &right);
    EXPECT_EQ(root.GetBaseClassRTTI(), nullptr);
}

TEST(CbRTTIRegistry, ImplementMacroRegistersTwoParentsAndTheCreationFunction)
{
    const CbRTTI* record = CbRTTI::Find(L"Benchmarked");
    ASSERT_EQ(record, &Benchmarked::RTTI);
    EXPECT_TRUE(record->IsKindOf(ZqUnitTest::RTTI));
    EXPECT_TRUE(record->IsKindOf(ZqBenchmark::RTTI));
    ASSERT_EQ(record->GetBaseClassRTTI()->count, 2u);
    EXPECT_EQ(record->GetBaseClassRTTI()->parents[0], &ZqUnitTest::RTTI);
    EXPECT_EQ(record->GetBaseClassRTTI()->parents[1], &ZqBenchmark::RTTI);

    std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(L"Benchmarked");
    ASSERT_TRUE(test);
    EXPECT_STREQ(test->GetClassName(), L"Benchmarked");
    EXPECT_TRUE(test->IsKindOf(ZqBenchmark::RTTI));
    EXPECT_TRUE(test->Is(Benchmarked::RTTI));
    EXPECT_FALSE(test->Is(ZqUnitTest::RTTI));
    EXPECT_NE(dynamic_cast<ZqBenchmark*>(test.get()), nullptr);
}

TEST(CbRTTIRegistry, UnknownNamesAndRecordsWithoutCreationFunctionCreateNothing)
{
    EXPECT_EQ(CbRTTI::Find(L"CbRTTITest_NoSuchClass"), nullptr);
    EXPECT_EQ(CbRTTI::Find(nullptr), nullptr);
    EXPECT_FALSE(CbFactory::Create(L"CbRTTITest_NoSuchClass"));
    EXPECT_FALSE(CbFactory::CreateAs<ZqUnitTest>(L"CbRTTITest_NoSuchClass"));

    // Registered, but without creation function: the collection and abstract bases.
    ASSERT_NE(CbRTTI::Find(L"ZqUnitTestCollection"), nullptr);
    EXPECT_FALSE(CbRTTI::Find(L"ZqUnitTestCollection")->CanCreate());
    EXPECT_FALSE(CbFactory::Create(L"ZqUnitTestCollection"));
    EXPECT_FALSE(AbstractBase::RTTI.CanCreate());
    EXPECT_FALSE(CbFactory::Create(L"AbstractBase"));
    EXPECT_FALSE(CbFactory::Create(L"ZqUnitTest"));
}

TEST(CbRTTIRegistry, CreateAsTheWrongInterfaceDestroysTheObject)
{
    Counted::s_constructed = Counted::s_destroyed = 0;
    EXPECT_FALSE(CbFactory::CreateAs<ZqUnitTest>(L"CbRTTITest_Counted"));
    EXPECT_EQ(Counted::s_constructed, 1);
    EXPECT_EQ(Counted::s_destroyed, 1);
    {
        std::unique_ptr<Counted> created = CbFactory::CreateAs<Counted>(L"CbRTTITest_Counted");
        ASSERT_TRUE(created);
        EXPECT_EQ(Counted::s_destroyed, 1);
    }
    EXPECT_EQ(Counted::s_constructed, 2);
    EXPECT_EQ(Counted::s_destroyed, 2);
}

TEST(CbRTTIRegistry, CreateAsAnInterfaceBesideIObjectCastsAcross)
{
    std::unique_ptr<IUnitTestRecreate> recreate = CbFactory::CreateAs<IUnitTestRecreate>(L"Recreating");
    ASSERT_TRUE(recreate);
    EXPECT_TRUE(recreate->CanRecreate(0));
    EXPECT_STREQ(dynamic_cast<IObject&>(*recreate).GetClassName(), L"Recreating");
    // Destroyed through the interface pointer at the end of the test.
    EXPECT_FALSE(CbFactory::CreateAs<IUnitTestRecreate>(L"Benchmarked"));
}

TEST(CbRTTIRegistry, CloneUsesTheCloningFunctionOfTheSourcesClass)
{
    const Cloneable source(42);
    std::unique_ptr<IObject> copy = CbFactory::Clone(source);
    ASSERT_TRUE(copy);
    EXPECT_NE(copy.get(), &source);
    ASSERT_TRUE(copy->GetRTTI() == Cloneable::RTTI);
    EXPECT_EQ(static_cast<Cloneable&>(*copy).GetValue(), 42);
    // Cloneable cannot be created by name, and Counted cannot be cloned.
    EXPECT_FALSE(CbFactory::Create(L"CbRTTITest_Cloneable"));
    EXPECT_FALSE(CbFactory::Clone(Counted()));
}

TEST(CbRTTIRegistry, DuplicateNamesShadowAndUncoverInEitherOrderOfDestruction)
{
    const wchar_t* const name = L"CbRTTITest_Duplicate";
    std::optional<CbRTTI> first(std::in_place, name, nullptr, nullptr);
    {
        const CbRTTI second(name, nullptr, nullptr);
        EXPECT_EQ(CbRTTI::Find(name), &second);
    }
    EXPECT_EQ(CbRTTI::Find(name), &*first);

    std::optional<CbRTTI> third(std::in_place, name, nullptr, nullptr);
    first.reset();
    EXPECT_EQ(CbRTTI::Find(name), &*third);
    third.reset();
    EXPECT_EQ(CbRTTI::Find(name), nullptr);
}

TEST(CbRTTIRegistry, RecordsLeaveTheRegistryWhenDestroyed)
{
    const std::size_t before = CbRTTI::GetRegistered().size();
    std::optional<CbRTTI> record(std::in_place, L"CbRTTITest_Temporary", nullptr, nullptr);
    const CbRTTI* const address = &*record;
    const std::vector<const CbRTTI*> during = CbRTTI::GetRegistered();
    EXPECT_EQ(during.size(), before + 1);
    EXPECT_EQ(during.back(), address);
    EXPECT_EQ(CbRTTI::Find(L"CbRTTITest_Temporary"), address);
    record.reset();
    const std::vector<const CbRTTI*> after = CbRTTI::GetRegistered();
    EXPECT_EQ(after.size(), before);
    EXPECT_EQ(std::find(after.begin(), after.end(), address), after.end());
    EXPECT_EQ(CbRTTI::Find(L"CbRTTITest_Temporary"), nullptr);
}
