// Test of the hashed set: its own operations, the set algebra against std::set on random sets, and a
// benchmark against std::set and std::unordered_set.

#include "basepool/cbset.h"
#include "zqbase/cbtimer.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqrandomseed.h"
#include "zqbase/zqunittest.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <unordered_set>
#include <vector>

namespace
{
using CIntSet = CbSet<int>;

CIntSet fromStd(const std::set<int>& keys)
{
    CIntSet set;
    for (int key : keys)
        set.Add(key);
    return set;
}

bool sameKeys(const CIntSet& set, const std::set<int>& expected)
{
    const std::set<int> actual(set.begin(), set.end());
    return actual == expected && set.GetCount() == expected.size();
}

// Pairs of random sets: sizes from empty to past several table growths, keys from a range that makes
// them overlap partly.
struct SRandomPair
{
    std::set<int> a, b;
};

std::vector<SRandomPair> randomPairs(std::uint32_t seed)
{
    std::mt19937 generator(seed);
    std::vector<SRandomPair> pairs;
    for (int sizeA : {0, 1, 7, 100, 1000, 5000})
        for (int sizeB : {0, 3, 150, 3000})
        {
            SRandomPair pair;
            const int range = std::max(1, (sizeA + sizeB) * 3 / 4);
            while (static_cast<int>(pair.a.size()) < sizeA && static_cast<int>(pair.a.size()) < range)
                pair.a.insert(static_cast<int>(generator() % range));
            while (static_cast<int>(pair.b.size()) < sizeB && static_cast<int>(pair.b.size()) < range)
                pair.b.insert(static_cast<int>(generator() % range));
            pairs.push_back(std::move(pair));
        }
    return pairs;
}

std::set<int> stdIntersection(const std::set<int>& a, const std::set<int>& b)
{
    std::set<int> result;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::inserter(result, result.end()));
    return result;
}

std::set<int> stdUnion(const std::set<int>& a, const std::set<int>& b)
{
    std::set<int> result;
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::inserter(result, result.end()));
    return result;
}

constexpr int kBenchmarkKeys = 2000;
} // namespace

class CbSet_UnitTest : public ZqUnitTest, public ZqBenchmark
{
    CB_DECLARE_RTTI(CbSet_UnitTest)
    ZQ_DECLARE_SUBTEST_TABLE(CbSet_UnitTest)

protected:
    unsigned int getBenchmarkCount() const override { return 10; }
    CString getBenchmarkName(unsigned int index) override;
    unsigned int getGroup(unsigned int index) const override;
    unsigned int getIterationCount() const override { return 5; }
    bool runBenchmark(unsigned int index, SBenchmarkData& data) override;
    void dump(const CString& text) override { WriteMessage(eInfo, L"\t" + text); }
    void onBeforeRun() override;
    void onAfterRun(bool success) override;

private:
    EResult runOperations();
    EResult runIntersectionInPlace();
    EResult runIntersectionAsNewSet();
    EResult runUnionInPlace();
    EResult runUnionAsNewSet();
    EResult runSubsets();
    EResult failed(const wchar_t* message, std::size_t sizeA = 0, std::size_t sizeB = 0) const;

    struct SBenchmarkSets
    {
        std::vector<int> keys;
        CIntSet cbSet, cbOther;
        std::set<int> stdSet, stdOther;
        std::unordered_set<int> hashSet;
    };
    std::unique_ptr<SBenchmarkSets> m_sets;
};

CB_IMPLEMENT_RTTI(CbSet_UnitTest, ZqUnitTest::RTTI, ZqBenchmark::RTTI);

const ZqSubtestRowOf<CbSet_UnitTest> CbSet_UnitTest::s_subtests[] = {
    {"Unit-Test", &CbSet_UnitTest::runOperations},
    {"Benchmark", [](CbSet_UnitTest& test) { return test.RunBenchmark() ? ePassed : eFailed; }},
    {"Intersection, &=, ==", &CbSet_UnitTest::runIntersectionInPlace},
    {"Intersect, &, !=", &CbSet_UnitTest::runIntersectionAsNewSet},
    {"Union, |=, ==", &CbSet_UnitTest::runUnionInPlace},
    {"Union, |, !=", &CbSet_UnitTest::runUnionAsNewSet},
    {"Subsets", &CbSet_UnitTest::runSubsets},
};

ZQ_IMPLEMENT_SUBTEST_TABLE(CbSet_UnitTest)

ZqUnitTest::EResult CbSet_UnitTest::failed(const wchar_t* message, std::size_t sizeA, std::size_t sizeB) const
{
    WriteMessageFormat(eError, L"%s (Mengen mit %u und %u Elementen)\n", message,
                       static_cast<unsigned int>(sizeA), static_cast<unsigned int>(sizeB));
    return eFailed;
}

ZqUnitTest::EResult CbSet_UnitTest::runOperations()
{
    CbSet<CString> words;
    if (!words.Add(L"Haus") || !words.Add(L"Maus") || words.Add(L"Haus") || words.GetCount() != 2)
        return failed(L"Add meldet neue oder doppelte Elemente falsch");
    if (!words.Contains(L"Maus") || words.Contains(L"Laus") || !words.Remove(L"Maus") ||
        words.Remove(L"Maus") || words.GetCount() != 1)
        return failed(L"Contains oder Remove falsch");

    CIntSet numbers;
    for (int i = 0; i < 3000; ++i)
        numbers.Add(i * 7);
    std::set<int> expected;
    for (int i = 0; i < 3000; ++i)
        expected.insert(i * 7);
    if (!sameKeys(numbers, expected))
        return failed(L"Iteration liefert nicht genau die eingefügten Elemente", numbers.GetCount());

    for (auto it = numbers.begin(); it != numbers.end();)
        it = *it % 2 ? numbers.Erase(it) : std::next(it);
    std::erase_if(expected, [](int key) { return key % 2 != 0; });
    CIntSet copy(numbers);
    numbers.RemoveAll();
    if (!sameKeys(copy, expected) || !numbers.IsEmpty() || numbers.begin() != numbers.end())
        return failed(L"Erase, Kopie oder RemoveAll falsch", copy.GetCount());
    return ePassed;
}

ZqUnitTest::EResult CbSet_UnitTest::runIntersectionInPlace()
{
    for (const SRandomPair& pair : randomPairs(ZqRandomSeed::Start(*this)))
    {
        CIntSet a = fromStd(pair.a);
        const CIntSet b = fromStd(pair.b);
        const CIntSet expected = fromStd(stdIntersection(pair.a, pair.b));
        a &= b;
        if (!(a == expected) || !sameKeys(a, stdIntersection(pair.a, pair.b)))
            return failed(L"A &= B ist nicht der Durchschnitt", pair.a.size(), pair.b.size());
        CIntSet named = fromStd(pair.a);
        named.IntersectWith(b);
        if (!(named == a))
            return failed(L"IntersectWith ist nicht gleich &=", pair.a.size(), pair.b.size());
        CIntSet self = fromStd(pair.a);
        self &= self;
        if (!(self == fromStd(pair.a)))
            return failed(L"A &= A verändert A", pair.a.size(), pair.b.size());
    }
    return ePassed;
}

ZqUnitTest::EResult CbSet_UnitTest::runIntersectionAsNewSet()
{
    for (const SRandomPair& pair : randomPairs(ZqRandomSeed::Start(*this)))
    {
        const CIntSet a = fromStd(pair.a);
        const CIntSet b = fromStd(pair.b);
        const std::set<int> expected = stdIntersection(pair.a, pair.b);
        const CIntSet c = a & b;
        if (!sameKeys(c, expected) || !sameKeys(CIntSet::Intersect(b, a), expected))
            return failed(L"A & B ist nicht der Durchschnitt", pair.a.size(), pair.b.size());
        if (!sameKeys(a, pair.a) || !sameKeys(b, pair.b))
            return failed(L"A & B verändert die Operanden", pair.a.size(), pair.b.size());
        if ((c != a) != (expected != pair.a))
            return failed(L"!= widerspricht dem Inhalt", pair.a.size(), pair.b.size());
    }
    return ePassed;
}

ZqUnitTest::EResult CbSet_UnitTest::runUnionInPlace()
{
    for (const SRandomPair& pair : randomPairs(ZqRandomSeed::Start(*this)))
    {
        CIntSet a = fromStd(pair.a);
        const CIntSet b = fromStd(pair.b);
        a |= b;
        if (!(a == fromStd(stdUnion(pair.a, pair.b))) || !sameKeys(a, stdUnion(pair.a, pair.b)))
            return failed(L"A |= B ist nicht die Vereinigung", pair.a.size(), pair.b.size());
        CIntSet named = fromStd(pair.a);
        named.UnionWith(b);
        CIntSet self = fromStd(pair.b);
        self |= self;
        if (!(named == a) || !(self == b))
            return failed(L"UnionWith oder B |= B falsch", pair.a.size(), pair.b.size());
    }
    return ePassed;
}

ZqUnitTest::EResult CbSet_UnitTest::runUnionAsNewSet()
{
    for (const SRandomPair& pair : randomPairs(ZqRandomSeed::Start(*this)))
    {
        const CIntSet a = fromStd(pair.a);
        const CIntSet b = fromStd(pair.b);
        const std::set<int> expected = stdUnion(pair.a, pair.b);
        const CIntSet c = a | b;
        if (!sameKeys(c, expected) || !sameKeys(CIntSet::Union(b, a), expected))
            return failed(L"A | B ist nicht die Vereinigung", pair.a.size(), pair.b.size());
        if (!sameKeys(a, pair.a) || !sameKeys(b, pair.b))
            return failed(L"A | B verändert die Operanden", pair.a.size(), pair.b.size());
        if ((c != b) != (expected != pair.b))
            return failed(L"!= widerspricht dem Inhalt", pair.a.size(), pair.b.size());
    }
    return ePassed;
}

ZqUnitTest::EResult CbSet_UnitTest::runSubsets()
{
    for (const SRandomPair& pair : randomPairs(ZqRandomSeed::Start(*this)))
    {
        const CIntSet a = fromStd(pair.a);
        const CIntSet b = fromStd(pair.b);
        const bool expected = std::includes(pair.b.begin(), pair.b.end(), pair.a.begin(), pair.a.end());
        if (a.IsSubsetOf(b) != expected || b.IsSupersetOf(a) != expected)
            return failed(L"IsSubsetOf/IsSupersetOf widerspricht std::includes", pair.a.size(),
                          pair.b.size());
        if (!(a & b).IsSubsetOf(a) || !a.IsSubsetOf(a | b) || !CIntSet().IsSubsetOf(a) || !a.IsSubsetOf(a))
            return failed(L"Teilmengen-Identitäten verletzt", pair.a.size(), pair.b.size());
        if ((a.IsSubsetOf(b) && b.IsSubsetOf(a)) != (a == b))
            return failed(L"Gegenseitige Teilmengen sind nicht gleich", pair.a.size(), pair.b.size());
    }
    return ePassed;
}

CString CbSet_UnitTest::getBenchmarkName(unsigned int index)
{
    static const wchar_t* const names[] = {
        L"CbSet<int> aufbauen",
        L"std::set<int> aufbauen",
        L"std::unordered_set<int> aufbauen",
        L"CbSet<int>::Contains",
        L"std::set<int>::find",
        L"std::unordered_set<int>::find",
        L"CbSet<int> & (Durchschnitt)",
        L"std::set_intersection",
        L"CbSet<int> | (Vereinigung)",
        L"std::set_union",
    };
    return index < std::size(names) ? CString(names[index]) : CString();
}

unsigned int CbSet_UnitTest::getGroup(unsigned int index) const
{
    return index < 3 ? 0 : index < 6 ? 1 : index < 8 ? 2 : 3;
}

void CbSet_UnitTest::onBeforeRun()
{
    WriteMessageFormat(eInfo, L"Benchmark CbSet vs. std::set vs. std::unordered_set, %d Schlüssel\n",
                       kBenchmarkKeys);
    m_sets = std::make_unique<SBenchmarkSets>();
    for (int i = 0; i < kBenchmarkKeys; ++i)
    {
        m_sets->keys.push_back(i * 3);
        m_sets->cbSet.Add(i * 3);
        m_sets->stdSet.insert(i * 3);
        m_sets->hashSet.insert(i * 3);
        // Every other key of the first set, and as many new ones.
        m_sets->cbOther.Add(i * 6);
        m_sets->stdOther.insert(i * 6);
    }
}

void CbSet_UnitTest::onAfterRun(bool)
{
    m_sets.reset();
    WriteMessage(eInfo, L"Gruppe 0: Aufbau aus 2000 Schlüsseln, Gruppe 1: Nachschlagen aller Schlüssel, "
                        L"Gruppe 2 und 3: Durchschnitt und Vereinigung zweier Mengen, die sich zur Hälfte "
                        L"überdecken.\n");
}

bool CbSet_UnitTest::runBenchmark(unsigned int index, SBenchmarkData& data)
{
    const SBenchmarkSets& sets = *m_sets;
    std::size_t result = 0;
    std::size_t expected = kBenchmarkKeys;
    CbTimer timer;
    switch (index)
    {
    case 0:
    {
        CIntSet set;
        for (int key : sets.keys)
            set.Add(key);
        result = set.GetCount();
        break;
    }
    case 1:
    {
        std::set<int> set(sets.keys.begin(), sets.keys.end());
        result = set.size();
        break;
    }
    case 2:
    {
        std::unordered_set<int> set(sets.keys.begin(), sets.keys.end());
        result = set.size();
        break;
    }
    case 3:
        for (int key : sets.keys)
            result += sets.cbSet.Contains(key);
        break;
    case 4:
        for (int key : sets.keys)
            result += sets.stdSet.find(key) != sets.stdSet.end();
        break;
    case 5:
        for (int key : sets.keys)
            result += sets.hashSet.find(key) != sets.hashSet.end();
        break;
    case 6:
        result = (sets.cbSet & sets.cbOther).GetCount();
        expected = kBenchmarkKeys / 2;
        break;
    case 7:
        result = stdIntersection(sets.stdSet, sets.stdOther).size();
        expected = kBenchmarkKeys / 2;
        break;
    case 8:
        result = (sets.cbSet | sets.cbOther).GetCount();
        expected = kBenchmarkKeys * 3 / 2;
        break;
    case 9:
        result = stdUnion(sets.stdSet, sets.stdOther).size();
        expected = kBenchmarkKeys * 3 / 2;
        break;
    default:
        WriteMessage(eError, L"Unbekannter Benchmark");
        return false;
    }
    const double seconds = timer.GetElapsedSeconds();
    if (result != expected)
    {
        WriteMessage(eError, L"Anzahl ist nicht korrekt");
        return false;
    }
    data.AddSample(seconds);
    data.result = static_cast<double>(result);
    return true;
}
