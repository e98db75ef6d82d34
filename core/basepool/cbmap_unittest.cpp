// Test of the hashed map: table sizing, insertion, lookup, removal, growth, iteration, copies and key
// types with their own traits; and a benchmark of lookups and iteration over 2000 keys comparing
// CbMap with std::map, std::unordered_map and CbSet for 64-bit, 32-bit, string and vector keys.

#include "basepool/cbmap.h"
#include "basepool/cbset.h"
#include "zqbase/cbtimer.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqunittest.h"

#include <cstdint>
#include <map>
#include <memory>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace
{
// A point as a key: float coordinates, so its bytes do not decide equality (-0 == +0).
struct SVector3
{
    float x, y, z;
    bool operator==(const SVector3& other) const { return x == other.x && y == other.y && z == other.z; }
    bool operator<(const SVector3& other) const
    {
        return std::tie(x, y, z) < std::tie(other.x, other.y, other.z);
    }
};
} // namespace

template <> struct CbMapTypes::SKeyTraits<SVector3>
{
    // FNV-1a of the coordinates with -0 written as +0.
    static std::uint64_t Hash(const SVector3& v)
    {
        const float coordinates[3] = {v.x == 0.0f ? 0.0f : v.x, v.y == 0.0f ? 0.0f : v.y,
                                      v.z == 0.0f ? 0.0f : v.z};
        return HashFixedBytes<sizeof coordinates>(coordinates);
    }
    static bool Equal(const SVector3& a, const SVector3& b) { return a == b; }
};

namespace
{
// The hash of the CbMap traits for the standard unordered map, so that string and vector cases
// compare the containers and not their hash functions.
template <class Key> struct STraitsHash
{
    std::size_t operator()(const Key& key) const { return CbMapTypes::SKeyTraits<Key>::Hash(key); }
};

constexpr unsigned int kKeys = 2000;
constexpr std::uint64_t kKeySum = std::uint64_t(kKeys) * (kKeys - 1) / 2;
constexpr unsigned int kPasses = 10;

// The containers of one key type, all mapping keys[i] to i.
template <class Key> struct SKeyedData
{
    std::vector<Key> keys;
    CbMap<Key, std::uint64_t> cbMap{128, 128};
    std::map<Key, std::uint64_t> stdMap;
    std::unordered_map<Key, std::uint64_t, STraitsHash<Key>> hashMap;
    CbSet<Key> cbSet;

    template <class MakeKey> explicit SKeyedData(MakeKey makeKey)
    {
        for (unsigned int i = 0; i < kKeys; ++i)
        {
            keys.push_back(makeKey(i));
            cbMap.SetAt(keys.back(), i);
            stdMap.emplace(keys.back(), i);
            hashMap.emplace(keys.back(), i);
            cbSet.Add(keys.back());
        }
    }
};
template <> struct STraitsHash<std::uint64_t> : std::hash<std::uint64_t>
{
};
template <> struct STraitsHash<unsigned int> : std::hash<unsigned int>
{
};
} // namespace

class CbMap_UnitTest : public ZqUnitTest, public ZqBenchmark
{
    CB_DECLARE_RTTI(CbMap_UnitTest)

public:
    struct SBenchmarkContainers
    {
        SKeyedData<std::uint64_t> wide{[](unsigned int i) { return std::uint64_t(i); }};
        SKeyedData<unsigned int> narrow{[](unsigned int i) { return i; }};
        SKeyedData<CString> strings{[](unsigned int i) { return CbFormat(L"Schlüssel %u", i); }};
        SKeyedData<SVector3> vectors{[](unsigned int i) {
            return SVector3{float(i), 0.5f * float(i), -float(i)};
        }};
    };
    using CaseFunction = void (*)(SBenchmarkContainers& data, std::uint64_t& sum, unsigned int& accesses,
                                  unsigned int passes);

protected:
    unsigned int getSubtestCount() const override { return 2; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

    unsigned int getBenchmarkCount() const override { return 38; }
    CString getBenchmarkName(unsigned int index) override;
    unsigned int getGroup(unsigned int index) const override;
    unsigned int getIterationCount() const override { return 5; }
    bool runBenchmark(unsigned int index, SBenchmarkData& data) override;
    void dump(const CString& text) override { WriteMessage(eInfo, L"\t" + text); }
    void onBeforeRun() override;
    void onAfterRun(bool success) override;
    // The check of a case's outcome: the sum of the keys, and one access per pass.
    bool checkCase(unsigned int index, std::uint64_t sum, unsigned int accesses) const;

    std::unique_ptr<SBenchmarkContainers> m_containers;

private:
    bool fail(const wchar_t* message) const;
    bool checkEmptyAndSizes() const;
    bool checkInsertLookupGrowth() const;
    bool checkRemoveAndErase() const;
    bool checkKeyTypesAndCopies() const;
};

CB_IMPLEMENT_RTTI(CbMap_UnitTest, ZqUnitTest::RTTI, ZqBenchmark::RTTI);

CString CbMap_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"Unit-Test";
    case 1:
        return L"Benchmark";
    }
    CB_THROW(CbException, "CbMap_UnitTest::getSubtestName");
}

ZqUnitTest::EResult CbMap_UnitTest::runUnitTest(unsigned int index)
{
    switch (index)
    {
    case 0:
        for (auto check : {&CbMap_UnitTest::checkEmptyAndSizes, &CbMap_UnitTest::checkInsertLookupGrowth,
                           &CbMap_UnitTest::checkRemoveAndErase, &CbMap_UnitTest::checkKeyTypesAndCopies})
            if (!(this->*check)())
                return eFailed;
        return ePassed;
    case 1:
        return RunBenchmark() ? ePassed : eFailed;
    }
    CB_THROW(CbException, "CbMap_UnitTest::runUnitTest");
}

bool CbMap_UnitTest::fail(const wchar_t* message) const
{
    WriteMessage(eError, CString(message) + L"\n");
    return false;
}

bool CbMap_UnitTest::checkEmptyAndSizes() const
{
    const CbMap<std::uint64_t, std::uint64_t> empty(128, 128);
    std::uint64_t value = 7;
    if (empty.GetCount() != 0 || empty.Lookup(0, value) || value != 7 || empty.PLookup(1) ||
        empty.begin() != empty.end())
        return fail(L"Leere Map findet Schlüssel");
    if (empty.GetHashTableSize() != 128 || CbMap<int, int>(100).GetHashTableSize() != 64 ||
        CbMap<int, int>(1).GetHashTableSize() != 1)
        return fail(L"Tabellengröße ist nicht die größte Zweierpotenz bis zur angeforderten Größe");
    return true;
}

bool CbMap_UnitTest::checkInsertLookupGrowth() const
{
    CbMap<std::uint64_t, std::uint64_t> map(128, 128);
    map.GetPlexManager().SetGrowthFactor(1.5f);
    for (std::uint64_t key = 0; key < 5000; ++key)
        map.SetAt(key * 256, key);
    if (map.GetCount() != 5000)
        return fail(L"Anzahl nach SetAt falsch");
    for (std::uint64_t key = 0; key < 5000; ++key)
    {
        std::uint64_t value = 0;
        if (!map.Lookup(key * 256, value) || value != key || map.Contains(key * 256 + 1))
            return fail(L"Lookup nach Wachstum der Tabelle falsch");
    }
    if (map.GetHashTableSize() < 4096 || map.GetLongestChain() > 8)
        return fail(L"Tabelle wächst nicht mit der Anzahl oder Ketten zu lang");
    WriteMessageFormat(eInfo, L"5000 Vielfache von 256: %u Buckets, längste Kette %u\n",
                       map.GetHashTableSize(), map.GetLongestChain());

    std::vector<int> seen(5000, 0);
    for (const auto& association : map)
        ++seen[association.value];
    if (std::count(seen.begin(), seen.end(), 1) != 5000)
        return fail(L"Iteration besucht nicht jedes Element genau einmal");

    map[17 * 256] = 99;
    ++map[123456789];
    const auto [association, inserted] = map.TryEmplace(0, 55);
    if (map.GetCount() != 5001 || *map.PLookup(17 * 256) != 99 || map[123456789] != 1 || inserted ||
        association->value != 0)
        return fail(L"operator[] oder TryEmplace falsch");
    return true;
}

bool CbMap_UnitTest::checkRemoveAndErase() const
{
    CbMap<int, int> map;
    for (int key = 0; key < 1000; ++key)
        map[key] = -key;
    for (int key = 0; key < 1000; key += 2)
        if (!map.RemoveKey(key))
            return fail(L"RemoveKey findet vorhandenen Schlüssel nicht");
    if (map.RemoveKey(0) || map.GetCount() != 500 || map.Contains(10) || !map.Contains(11))
        return fail(L"RemoveKey entfernt falsch");

    for (auto it = map.begin(); it != map.end();)
        it = it->key % 3 == 0 ? map.Erase(it) : std::next(it);
    int remaining = 0;
    for (const auto& association : map)
        remaining += association.key % 3 != 0 && association.value == -association.key;
    if (remaining != 333 || map.GetCount() != 333)
        return fail(L"Erase während der Iteration falsch");

    map.RemoveAll();
    map[5] = 5;
    if (map.GetCount() != 1 || map.begin()->key != 5)
        return fail(L"Map nach RemoveAll nicht wiederverwendbar");
    return true;
}

bool CbMap_UnitTest::checkKeyTypesAndCopies() const
{
    CbMap<CString, std::uint64_t> names(128, 128);
    names[L"Äpfel"] = 1;
    names[L"Birnen"] = 2;
    names.SetAt(L"Äpfel", 3);
    CbMap<CString, std::uint64_t> copy(names);
    names.RemoveKey(L"Birnen");
    std::uint64_t value = 0;
    if (copy.GetCount() != 2 || !copy.Lookup(L"Äpfel", value) || value != 3 || !copy.Contains(L"Birnen") ||
        names.Contains(L"Birnen"))
        return fail(L"Map mit CString-Schlüsseln oder ihre Kopie falsch");

    CbMap<SVector3, int> points;
    points[SVector3{0.0f, 1.0f, 2.0f}] = 1;
    if (!points.Contains(SVector3{-0.0f, 1.0f, 2.0f}) || points.Contains(SVector3{0.0f, 1.0f, 3.0f}))
        return fail(L"Schlüssel mit eigenen Traits: -0 und +0 nicht gleich behandelt");

    CbMap<CString, std::uint64_t> moved(std::move(copy));
    copy = moved;
    if (moved.GetCount() != 2 || copy.GetCount() != 2 || !copy.Contains(L"Birnen"))
        return fail(L"Move oder Zuweisung falsch");
    return true;
}

namespace
{
using SData = CbMap_UnitTest::SBenchmarkContainers;

// Runs pass() passes times; each pass sums what it found and counts as one access.
template <class Pass> void repeat(std::uint64_t& sum, unsigned int& accesses, unsigned int passes, Pass pass)
{
    for (unsigned int i = 0; i < passes; ++i)
    {
        sum = pass();
        ++accesses;
    }
}

template <auto Keyed> void cbLookup(SData& d, std::uint64_t& sum, unsigned int& accesses, unsigned int passes)
{
    const auto& data = d.*Keyed;
    repeat(sum, accesses, passes,
           [&]
           {
               std::uint64_t s = 0, value = 0;
               for (const auto& key : data.keys)
                   if (data.cbMap.Lookup(key, value))
                       s += value;
               return s;
           });
}
template <auto Keyed>
void cbPLookup(SData& d, std::uint64_t& sum, unsigned int& accesses, unsigned int passes)
{
    const auto& data = d.*Keyed;
    repeat(sum, accesses, passes,
           [&]
           {
               std::uint64_t s = 0;
               for (const auto& key : data.keys)
                   if (const std::uint64_t* value = data.cbMap.PLookup(key))
                       s += *value;
               return s;
           });
}
template <auto Keyed> void cbIndex(SData& d, std::uint64_t& sum, unsigned int& accesses, unsigned int passes)
{
    auto& data = d.*Keyed;
    repeat(sum, accesses, passes,
           [&]
           {
               std::uint64_t s = 0;
               for (const auto& key : data.keys)
                   s += data.cbMap[key];
               return s;
           });
}
template <auto Keyed>
void cbIterate(SData& d, std::uint64_t& sum, unsigned int& accesses, unsigned int passes)
{
    const auto& data = d.*Keyed;
    repeat(sum, accesses, passes,
           [&]
           {
               std::uint64_t s = 0;
               for (const auto& association : data.cbMap)
                   s += association.value;
               return s;
           });
}
template <auto Keyed, auto Map>
void stdFind(SData& d, std::uint64_t& sum, unsigned int& accesses, unsigned int passes)
{
    const auto& data = d.*Keyed;
    const auto& map = data.*Map;
    repeat(sum, accesses, passes,
           [&]
           {
               std::uint64_t s = 0;
               for (const auto& key : data.keys)
                   if (const auto it = map.find(key); it != map.end())
                       s += it->second;
               return s;
           });
}
template <auto Keyed, auto Map>
void stdIterate(SData& d, std::uint64_t& sum, unsigned int& accesses, unsigned int passes)
{
    const auto& map = (d.*Keyed).*Map;
    repeat(sum, accesses, passes,
           [&]
           {
               std::uint64_t s = 0;
               for (const auto& entry : map)
                   s += entry.second;
               return s;
           });
}
template <auto Keyed>
void setContains(SData& d, std::uint64_t& sum, unsigned int& accesses, unsigned int passes)
{
    const auto& data = d.*Keyed;
    repeat(sum, accesses, passes,
           [&]
           {
               std::uint64_t s = 0;
               for (std::size_t i = 0; i < data.keys.size(); ++i)
                   if (data.cbSet.Contains(data.keys[i]))
                       s += i;
               return s;
           });
}
template <auto Keyed>
void setIterate(SData& d, std::uint64_t& sum, unsigned int& accesses, unsigned int passes)
{
    const auto& set = (d.*Keyed).cbSet;
    repeat(sum, accesses, passes,
           [&]
           {
               std::uint64_t s = 0;
               for (const auto key : set)
                   s += key;
               return s;
           });
}

template <class Key> using Keyed = SKeyedData<Key>;

struct SCase
{
    const wchar_t* name;
    unsigned int group;
    CbMap_UnitTest::CaseFunction function;
};

// Groups: 0 64-bit keys, 1 32-bit keys, 2 string keys, 3 vector keys.
const SCase s_cases[] = {
    {L"CbMap<unsigned __int64>::Lookup", 0, cbLookup<&SData::wide>},
    {L"CbMap<unsigned __int64>::PLookup", 0, cbPLookup<&SData::wide>},
    {L"CbMap<unsigned __int64>::operator[]", 0, cbIndex<&SData::wide>},
    {L"CbMap<unsigned __int64> Iteration", 0, cbIterate<&SData::wide>},
    {L"std::map<unsigned __int64>::find", 0, stdFind<&SData::wide, &Keyed<std::uint64_t>::stdMap>},
    {L"std::map<unsigned __int64> Iteration", 0, stdIterate<&SData::wide, &Keyed<std::uint64_t>::stdMap>},
    {L"std::unordered_map<unsigned __int64>::find", 0, stdFind<&SData::wide, &Keyed<std::uint64_t>::hashMap>},
    {L"std::unordered_map<unsigned __int64> Iteration", 0,
     stdIterate<&SData::wide, &Keyed<std::uint64_t>::hashMap>},
    {L"CbSet<unsigned __int64>::Contains", 0, setContains<&SData::wide>},
    {L"CbSet<unsigned __int64> Iteration", 0, setIterate<&SData::wide>},
    {L"CbMap<unsigned int>::Lookup", 1, cbLookup<&SData::narrow>},
    {L"CbMap<unsigned int>::PLookup", 1, cbPLookup<&SData::narrow>},
    {L"CbMap<unsigned int>::operator[]", 1, cbIndex<&SData::narrow>},
    {L"CbMap<unsigned int> Iteration", 1, cbIterate<&SData::narrow>},
    {L"std::map<unsigned int>::find", 1, stdFind<&SData::narrow, &Keyed<unsigned int>::stdMap>},
    {L"std::map<unsigned int> Iteration", 1, stdIterate<&SData::narrow, &Keyed<unsigned int>::stdMap>},
    {L"std::unordered_map<unsigned int>::find", 1, stdFind<&SData::narrow, &Keyed<unsigned int>::hashMap>},
    {L"std::unordered_map<unsigned int> Iteration", 1,
     stdIterate<&SData::narrow, &Keyed<unsigned int>::hashMap>},
    {L"CbSet<unsigned int>::Contains", 1, setContains<&SData::narrow>},
    {L"CbSet<unsigned int> Iteration", 1, setIterate<&SData::narrow>},
    {L"CbMap<CString>::Lookup", 2, cbLookup<&SData::strings>},
    {L"CbMap<CString>::PLookup", 2, cbPLookup<&SData::strings>},
    {L"CbMap<CString>::operator[]", 2, cbIndex<&SData::strings>},
    {L"CbMap<CString> Iteration", 2, cbIterate<&SData::strings>},
    {L"std::map<CString>::find", 2, stdFind<&SData::strings, &Keyed<CString>::stdMap>},
    {L"std::map<CString> Iteration", 2, stdIterate<&SData::strings, &Keyed<CString>::stdMap>},
    {L"std::unordered_map<CString>::find", 2, stdFind<&SData::strings, &Keyed<CString>::hashMap>},
    {L"std::unordered_map<CString> Iteration", 2, stdIterate<&SData::strings, &Keyed<CString>::hashMap>},
    {L"CbSet<CString>::Contains", 2, setContains<&SData::strings>},
    {L"CbMap<Vektor>::Lookup", 3, cbLookup<&SData::vectors>},
    {L"CbMap<Vektor>::PLookup", 3, cbPLookup<&SData::vectors>},
    {L"CbMap<Vektor>::operator[]", 3, cbIndex<&SData::vectors>},
    {L"CbMap<Vektor> Iteration", 3, cbIterate<&SData::vectors>},
    {L"std::map<Vektor>::find", 3, stdFind<&SData::vectors, &Keyed<SVector3>::stdMap>},
    {L"std::map<Vektor> Iteration", 3, stdIterate<&SData::vectors, &Keyed<SVector3>::stdMap>},
    {L"std::unordered_map<Vektor>::find", 3, stdFind<&SData::vectors, &Keyed<SVector3>::hashMap>},
    {L"std::unordered_map<Vektor> Iteration", 3, stdIterate<&SData::vectors, &Keyed<SVector3>::hashMap>},
    {L"CbSet<Vektor>::Contains", 3, setContains<&SData::vectors>},
};
static_assert(std::size(s_cases) == 38);
} // namespace

CString CbMap_UnitTest::getBenchmarkName(unsigned int index)
{
    return index < std::size(s_cases) ? CString(s_cases[index].name) : CString();
}

unsigned int CbMap_UnitTest::getGroup(unsigned int index) const
{
    return index < std::size(s_cases) ? s_cases[index].group : 0;
}

void CbMap_UnitTest::onBeforeRun()
{
    WriteMessageFormat(eInfo,
                       L"Benchmark CbMap vs. std::map vs. std::unordered_map vs. CbSet, %u Schlüssel, "
                       L"%u Durchgänge je Fall\n",
                       kKeys, kPasses);
    m_containers = std::make_unique<SBenchmarkContainers>();
}

void CbMap_UnitTest::onAfterRun(bool)
{
    m_containers.reset();
    WriteMessage(eInfo,
                 L"Gruppe 0 (64-Bit-Schlüssel) und 1 (32-Bit-Schlüssel): Nachschlagen und Iterieren; "
                 L"std::unordered_map mit der Identität als Hash, CbMap mit FNV-1a der Schlüsselbytes. "
                 L"Gruppe 2 (CString) und 3 (Vektor aus drei float): Nachschlagen längerer Schlüssel, "
                 L"beide Hash-Container mit demselben Hash, std::map mit dem Vergleich der Schlüssel. "
                 L"CbSet::Contains zeigt die Kosten des Nachschlagens ohne Wert, die Iteration die des "
                 L"Durchlaufens aller Buckets.\n");
}

bool CbMap_UnitTest::runBenchmark(unsigned int index, SBenchmarkData& data)
{
    if (index >= std::size(s_cases))
    {
        WriteMessage(eError, L"Unbekannter Benchmark");
        CB_THROW(CbException, "CbMap_UnitTest::runBenchmark");
    }
    std::uint64_t sum = 0;
    unsigned int accesses = 0;
    CbTimer timer;
    s_cases[index].function(*m_containers, sum, accesses, kPasses);
    const double seconds = timer.GetElapsedSeconds();
    if (!checkCase(index, sum, accesses))
        return false;
    data.AddSample(seconds);
    data.result = static_cast<double>(sum);
    return true;
}

bool CbMap_UnitTest::checkCase(unsigned int index, std::uint64_t sum, unsigned int accesses) const
{
    if (sum != kKeySum)
    {
        WriteMessageFormat(eError, L"Summe ist nicht korrekt (%d)", static_cast<int>(index));
        return false;
    }
    if (accesses != kPasses)
    {
        WriteMessage(eError, L"Anzahl Zugriffe ist nicht korrekt");
        return false;
    }
    return true;
}
