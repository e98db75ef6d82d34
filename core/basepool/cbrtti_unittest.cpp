// Test of the type records: parents, identity, Is, IsKindOf and lookup by name, on four records of
// its own: A, B (parent A), C, D (parents B then C).

#include "basepool/cbrtti.h"
#include "zqbase/zqunittest.h"

#include <array>

namespace
{
class A : public IObject
{
public:
    static const CbRTTI RTTI;
    const CbRTTI& GetRTTI() const override { return RTTI; }
};
class B : public A
{
public:
    static const CbRTTI RTTI;
    const CbRTTI& GetRTTI() const override { return RTTI; }
};
class C : public IObject
{
public:
    static const CbRTTI RTTI;
    const CbRTTI& GetRTTI() const override { return RTTI; }
};
class D : public B, public C
{
public:
    static const CbRTTI RTTI;
    const CbRTTI& GetRTTI() const override { return RTTI; }
};

const CbRTTI A::RTTI(L"A", nullptr, nullptr);
const CbRTTI B::RTTI(L"B", A::RTTI, nullptr, nullptr);
const CbRTTI C::RTTI(L"C", nullptr, nullptr);
const CbRTTI D::RTTI(L"D", B::RTTI, C::RTTI, nullptr, nullptr);
} // namespace

class CbRTTI_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(CbRTTI_UnitTest)

protected:
    EResult runUnitTest(unsigned int) override;

private:
    static bool checkParents(const CbRTTI& record, std::initializer_list<const CbRTTI*> parents);
};

CB_IMPLEMENT_RTTI(CbRTTI_UnitTest, ZqUnitTest::RTTI);

bool CbRTTI_UnitTest::checkParents(const CbRTTI& record, std::initializer_list<const CbRTTI*> parents)
{
    const CbRTTI::SBaseClassList* bases = record.GetBaseClassRTTI();
    if (parents.size() == 0)
        return bases == nullptr;
    if (!bases || bases->count != parents.size())
        return false;
    std::size_t i = 0;
    for (const CbRTTI* parent : parents)
        if (bases->parents[i++] != parent)
            return false;
    return true;
}

ZqUnitTest::EResult CbRTTI_UnitTest::runUnitTest(unsigned int)
{
    const std::array<const CbRTTI*, 4> records = {&A::RTTI, &B::RTTI, &C::RTTI, &D::RTTI};

    if (!checkParents(A::RTTI, {}) || !checkParents(B::RTTI, {&A::RTTI}) || !checkParents(C::RTTI, {}) ||
        !checkParents(D::RTTI, {&B::RTTI, &C::RTTI}))
    {
        WriteMessage(eError, L"GetBaseClassRTTI liefert falsche Basisklassen\n");
        return eAborted;
    }

    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; j < 4; ++j)
        {
            const bool same = i == j;
            if ((*records[i] == *records[j]) != same || (*records[i] != *records[j]) == same)
            {
                WriteMessageFormat(eError, L"Vergleich von %s und %s falsch\n", records[i]->GetName(),
                                   records[j]->GetName());
                return eAborted;
            }
        }

    // Objects of each class, to check the records they report as well.
    const A a;
    const B b;
    const C c;
    const D d;
    const std::array<const CbRTTI*, 4> fromObjects = {&a.GetRTTI(), &b.GetRTTI(), &c.GetRTTI(),
                                                      &static_cast<const B&>(d).GetRTTI()};

    // kindOf[i][j]: record i is a kind of record j.
    static const bool kindOf[4][4] = {
        {true, false, false, false},
        {true, true, false, false},
        {false, false, true, false},
        {true, true, true, true},
    };
    for (const auto* set : {&records, &fromObjects})
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t j = 0; j < 4; ++j)
            {
                if ((*set)[i]->Is(*records[j]) != (i == j))
                {
                    WriteMessageFormat(eError, L"Is(%s, %s) falsch\n", records[i]->GetName(),
                                       records[j]->GetName());
                    return eAborted;
                }
                if ((*set)[i]->IsKindOf(*records[j]) != kindOf[i][j])
                {
                    WriteMessageFormat(eError, L"IsKindOf(%s, %s) falsch\n", records[i]->GetName(),
                                       records[j]->GetName());
                    return eAborted;
                }
            }

    for (const CbRTTI* record : records)
        if (CbRTTI::Find(record->GetName()) != record)
        {
            WriteMessageFormat(eError, L"Find(\"%s\") liefert nicht den registrierten Typ\n",
                               record->GetName());
            return eAborted;
        }
    return ePassed;
}
