// Subtests 1 to 13 of CbArray_UnitTest; the benchmark of subtest 0 is in cbarraybenchmark_unittest.cpp.

#include "basepool/cbarray_unittest.h"

#include "basepool/cbarray_serializer.h"
#include "basepool/cbvector3.h"
#include "basepool/zqarraydynamicsize.h"
#include "zqbase/zqtestenvironment.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string_view>

namespace
{
// An element that counts its live instances, copies and moves, to see what the array constructs
// and destroys.
struct SCounted
{
    static inline int s_live = 0;
    static inline int s_copies = 0;
    static inline int s_moves = 0;
    // Copies left before a copy throws; negative: never.
    static inline int s_copiesUntilThrow = -1;

    int value = 0;

    SCounted() { ++s_live; }
    SCounted(int v) : value(v) { ++s_live; }
    SCounted(const SCounted& other) : value(other.value)
    {
        if (s_copiesUntilThrow == 0)
            throw std::runtime_error("copy refused");
        if (s_copiesUntilThrow > 0)
            --s_copiesUntilThrow;
        ++s_live;
        ++s_copies;
    }
    SCounted(SCounted&& other) noexcept : value(other.value)
    {
        ++s_live;
        ++s_moves;
    }
    SCounted& operator=(const SCounted& other) = default;
    SCounted& operator=(SCounted&& other) noexcept = default;
    ~SCounted() { --s_live; }
    bool operator==(const SCounted& other) const { return value == other.value; }

    static void Reset()
    {
        s_copies = s_moves = 0;
        s_copiesUntilThrow = -1;
    }
};

// Elements so large that 2^32 - 1 of them need 2^52 bytes, 2^62 bytes, or more than a std::size_t
// counts: no x86-64 process can map the first two (its address space ends at 2^47, or 2^57 with
// five-level paging), the third is rejected before the allocator is asked.
struct SCountedMegabyte
{
    int value = 0;
    unsigned char payload[(1u << 20) - sizeof(int)];
    SCountedMegabyte(int v) : value(v) { ++SCounted::s_live; }
    // Moves only the value: the payload exists for its size.
    SCountedMegabyte(SCountedMegabyte&& other) noexcept : value(other.value) { ++SCounted::s_live; }
    ~SCountedMegabyte() { --SCounted::s_live; }
};
struct SGigabyte
{
    unsigned char payload[1u << 30];
};
struct SBeyondAddressSpace
{
    unsigned char payload[std::size_t(1) << 33];
};

// True when the sanitizer's allocator hands out null for requests it cannot satisfy, instead of
// ending the process; always true without a sanitizer.
bool allocatorMayReturnNull()
{
#if defined(__SANITIZE_ADDRESS__)
    const char* options = std::getenv("ASAN_OPTIONS");
    if (!options)
        return false;
    const std::string_view text(options);
    return text.find("allocator_may_return_null=1") != std::string_view::npos ||
           text.find("allocator_may_return_null=true") != std::string_view::npos;
#else
    return true;
#endif
}

// Runs action and tells whether it threw TException.
template <class TException, class TAction> bool throws(TAction action)
{
    try
    {
        action();
    }
    catch (const TException&)
    {
        return true;
    }
    return false;
}
} // namespace

CB_IMPLEMENT_RTTI(CbArray_UnitTest, ZqUnitTest::RTTI, ZqBenchmark::RTTI);

CString CbArray_UnitTest::getSubtestName(unsigned int index)
{
    static const wchar_t* const names[] = {
        L"Benchmark",
        L"Iteration mit Iterator",
        L"Iteration range-based",
        L"Iteration über Bereich",
        L"Move-Semantik",
        L"Dynamische Manipulation",
        L"Serialisierung",
        L"ZqArrayDynamicSize",
        L"Array Copies",
        L"std-Algorithmen",
        L"std::initializer_list",
        L"Remove",
        L"Riesige Allokation",
        L"Grow",
    };
    if (index >= getSubtestCount())
        CB_THROW(CbException, "CbArray_UnitTest::getSubtestName");
    return names[index];
}

ZqUnitTest::EResult CbArray_UnitTest::runUnitTest(unsigned int index)
{
    if (index >= getSubtestCount())
        CB_THROW(CbException, "CbArray_UnitTest::runUnitTest");
    SCounted::Reset();
    const int liveBefore = SCounted::s_live;
    using Subtest = EResult (CbArray_UnitTest::*)();
    static constexpr Subtest subtests[] = {
        &CbArray_UnitTest::runBenchmarkSubtest,
        &CbArray_UnitTest::runIterator,
        &CbArray_UnitTest::runRangeBased,
        &CbArray_UnitTest::runRange,
        &CbArray_UnitTest::runMove,
        &CbArray_UnitTest::runDynamicManipulation,
        &CbArray_UnitTest::runSerialization,
        &CbArray_UnitTest::runDynamicSize,
        &CbArray_UnitTest::runCopies,
        &CbArray_UnitTest::runAlgorithms,
        &CbArray_UnitTest::runInitializerList,
        &CbArray_UnitTest::runRemove,
        &CbArray_UnitTest::runHugeAllocation,
        &CbArray_UnitTest::runGrow,
    };
    const Subtest subtest = subtests[index];
    EResult result = eAborted;
    try
    {
        result = (this->*subtest)();
    }
    catch (const std::exception& e)
    {
        WriteMessageFormat(eError, L"Unerwartete Ausnahme: %S\n", e.what());
        return eAborted;
    }
    catch (...)
    {
        return eAborted;
    }
    if (result == ePassed && SCounted::s_live != liveBefore)
        return fail(L"Elemente wurden nicht oder doppelt zerstört");
    return result;
}

ZqUnitTest::EResult CbArray_UnitTest::runIterator()
{
    CbArray<int> array;
    for (int i = 0; i < 100; ++i)
        array.Add(3 * i);
    int expected = 0;
    for (CbArray<int>::iterator it = array.begin(); it != array.end(); ++it, expected += 3)
        if (*it != expected)
            return fail(L"Iterator liefert falsches Element");
    if (expected != 300 || array.end() - array.begin() != 100)
        return fail(L"Iterator läuft nicht über alle Elemente");

    for (auto it = array.begin(); it != array.end(); ++it)
        *it += 1;
    const CbArray<int>& constant = array;
    expected = 1;
    for (CbArray<int>::const_iterator it = constant.cbegin(); it != constant.cend(); ++it, expected += 3)
        if (*it != expected)
            return fail(L"Schreiben über Iterator wirkt nicht");

    expected = 298;
    for (auto it = constant.rbegin(); it != constant.rend(); ++it, expected -= 3)
        if (*it != expected)
            return fail(L"Rückwärts-Iterator liefert falsches Element");
    if (expected != -2)
        return fail(L"Rückwärts-Iterator läuft nicht über alle Elemente");

    // Random access: the iterators are pointers into the block.
    if (&*(array.begin() + 42) != &array[42] || array.rbegin()[0] != array[99] ||
        &*array.rbegin() != array.GetDataEnd() - 1)
        return fail(L"Iterator zeigt nicht in den Block");

    CbArray<CString> empty;
    if (empty.begin() != empty.end() || empty.rbegin() != empty.rend())
        return fail(L"Leeres Array hat Elemente");
    CbArray<CString> texts = {L"eins", L"zwei", L"drei"};
    CString joined;
    for (auto it = texts.begin(); it != texts.end(); ++it)
        joined += *it;
    if (joined != CString(L"einszweidrei"))
        return fail(L"Iterator über CString liefert falsches Element");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runRangeBased()
{
    CbArray<SCounted> array;
    for (int i = 1; i <= 1000; ++i)
        array.Emplace(i);
    SCounted::Reset();
    long long sum = 0;
    for (const SCounted& element : array)
        sum += element.value;
    if (sum != 500500)
        return fail(L"Range-based-loop summiert falsch");
    for (SCounted& element : array)
        element.value *= 2;
    int expected = 2000;
    for (const SCounted& element : array.Reversed())
    {
        if (element.value != expected)
            return fail(L"Range-based-loop rückwärts liefert falsches Element");
        expected -= 2;
    }
    if (expected != 0)
        return fail(L"Range-based-loop rückwärts läuft nicht über alle Elemente");
    if (SCounted::s_copies != 0 || SCounted::s_moves != 0)
        return fail(L"Range-based-loop über Referenzen kopiert Elemente");

    const CbArray<int> empty;
    for ([[maybe_unused]] int value : empty)
        return fail(L"Range-based-loop über leeres Array läuft");
    for ([[maybe_unused]] int value : empty.Reversed())
        return fail(L"Range-based-loop rückwärts über leeres Array läuft");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runRange()
{
    CbArray<int> array;
    array.SetCount(100);
    std::iota(array.begin(), array.end(), 0);
    // The windows [first, first + count) with the sum of first .. first+count-1.
    const unsigned int windows[][2] = {{0, 100}, {0, 1}, {99, 1}, {10, 20}, {37, 0}, {100, 0}};
    for (const auto& window : windows)
    {
        const unsigned int first = window[0], count = window[1];
        long long sum = 0;
        for (int value : array.GetRange(first, count))
            sum += value;
        long long sumIterators = 0;
        for (auto it = array.begin() + first; it != array.begin() + first + count; ++it)
            sumIterators += *it;
        const long long expected = static_cast<long long>(count) * (2 * first + count - 1) / 2;
        if (sum != expected || sumIterators != expected)
            return fail(L"Summe über Bereich falsch");
    }

    for (int& value : array.GetRange(40, 10))
        value = -1;
    for (unsigned int i = 0; i < 100; ++i)
        if ((array[i] == -1) != (i >= 40 && i < 50))
            return fail(L"Schreiben über Bereich trifft falsche Elemente");

    if (!throws<CbExceptionContainer>([&] { array.GetRange(95, 6); }))
        return fail(L"Bereich über das Ende hinaus wird nicht abgelehnt");
    const std::span<const int> all(array);
    if (all.size() != 100 || all.data() != array.GetData())
        return fail(L"std::span über das Array falsch");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runMove()
{
    CbArray<SCounted> source(7);
    for (int i = 0; i < 1000; ++i)
        source.Add(SCounted(i));
    if (SCounted::s_copies != 0)
        return fail(L"Wachstum kopiert Elemente statt sie zu verschieben");
    SCounted::Reset();
    const SCounted* block = source.GetData();

    CbArray<SCounted> moved(std::move(source));
    if (moved.GetData() != block || moved.GetCount() != 1000 || moved.GetGrowBy() != 7)
        return fail(L"Move-Konstruktor übernimmt den Block nicht");
    if (source.GetData() || source.GetDataEnd() || source.GetCount() || source.GetCapacity())
        return fail(L"Quelle ist nach dem Move nicht leer");
    if (SCounted::s_copies || SCounted::s_moves || SCounted::s_live != 1000)
        return fail(L"Move-Konstruktor fasst Elemente an");

    CbArray<SCounted> target = {SCounted(1), SCounted(2)};
    target = std::move(moved);
    if (target.GetData() != block || target.GetCount() != 1000 || SCounted::s_live != 1000)
        return fail(L"Move-Zuweisung übernimmt den Block nicht oder gibt alte Elemente nicht frei");
    if (moved.GetData() || moved.GetCount())
        return fail(L"Quelle ist nach der Move-Zuweisung nicht leer");
    CbArray<SCounted>& alias = target;
    target = std::move(alias);
    if (target.GetData() != block || target.GetCount() != 1000 || target[999].value != 999)
        return fail(L"Move-Zuweisung auf sich selbst verliert Elemente");

    // Move-only elements travel through growth, insertion and removal.
    CbArray<std::unique_ptr<int>> owners;
    for (int i = 0; i < 100; ++i)
        owners.Add(std::make_unique<int>(i));
    owners.InsertAt(50, std::make_unique<int>(-1));
    owners.RemoveAt(10, 5);
    if (owners.GetCount() != 96 || *owners[45] != -1 || *owners[10] != 15 || *owners[95] != 99)
        return fail(L"Move-only-Elemente gehen verloren");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runDynamicManipulation()
{
    // Random operations on the array and on std::vector as the model; both must agree after each.
    std::mt19937 random(20240611u);
    CbArray<SCounted> array;
    std::vector<int> model;
    for (int step = 0; step < 3000; ++step)
    {
        const unsigned int count = array.GetCount();
        const unsigned int at = count ? random() % (count + 1) : 0;
        const int value = static_cast<int>(random() % 1000);
        switch (random() % 9)
        {
        case 0:
        case 1:
            array.Add(SCounted(value));
            model.push_back(value);
            break;
        case 2:
        {
            const unsigned int n = random() % 4;
            array.InsertAt(at, SCounted(value), n);
            model.insert(model.begin() + at, n, value);
            break;
        }
        case 3:
            if (count)
            {
                // Insert a copy of one of the array's own elements.
                const unsigned int source = random() % count;
                const int copied = model[source];
                array.InsertAt(at, array[source], 2);
                model.insert(model.begin() + at, 2, copied);
            }
            break;
        case 4:
        {
            const unsigned int n = at < count ? random() % std::min(4u, count - at + 1) : 0;
            array.RemoveAt(at, n);
            model.erase(model.begin() + at, model.begin() + at + n);
            break;
        }
        case 5:
        {
            const unsigned int n = random() % (count + 6);
            array.SetCount(n);
            model.resize(n);
            break;
        }
        case 6:
            array.SetCapacity(count + random() % 8);
            break;
        case 7:
            if (count)
            {
                array.RemoveLast();
                model.pop_back();
            }
            break;
        case 8:
            array.Append(array.GetData(), std::min(count, 5u));
            model.insert(model.end(), model.begin(), model.begin() + std::min<std::size_t>(model.size(), 5));
            break;
        }
        if (array.GetCount() != model.size() || array.GetCount() > array.GetCapacity() ||
            SCounted::s_live != static_cast<int>(array.GetCount()))
            return fail(L"Anzahl nach Einfügen/Entfernen falsch");
        if (array.GetDataEnd() != (array.IsEmpty() ? nullptr : array.GetData() + array.GetCount()))
            return fail(L"End-Zeiger nach Einfügen/Entfernen falsch");
        for (unsigned int i = 0; i < array.GetCount(); ++i)
            if (array[i].value != model[i])
                return fail(L"Inhalt nach Einfügen/Entfernen falsch");
    }
    if (!throws<CbExceptionContainer>([&] { array.InsertAt(array.GetCount() + 1, SCounted(0)); }))
        return fail(L"Einfügen hinter dem Ende wird nicht abgelehnt");
    return ePassed;
}

template <class T>
ZqUnitTest::EResult CbArray_UnitTest::serializationRoundTrip(const CbArray<T>& written, const wchar_t* what)
{
    std::vector<unsigned char> buffer;
    CbStreamWriteBinary output(buffer);
    output << written;
    CbStreamReadBinary input(buffer);
    CbArray<T> read = {T(), T(), T()};
    input >> read;
    if (!(read == written) || !input.IsAtEnd())
        return fail(CString(L"Serialisierung verändert ") + what);
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runSerialization()
{
    CbArray<int> numbers;
    for (int i = 0; i < 1000; ++i)
        numbers.Add(i * i - 500);
    CbArray<CString> texts = {L"", L"Grüße", L"a", CString(L'x', 5000)};
    CbArray<CbVector3f> points = {{1.5f, -2.0f, 3.25f}, {0, 0, 0}, {-1e30f, 1e-30f, 7}};
    CbArray<CbArray<int>> nested = {{1, 2, 3}, {}, {4}};
    if (serializationRoundTrip(numbers, L"int") != ePassed ||
        serializationRoundTrip(CbArray<int>(), L"leeres Array") != ePassed ||
        serializationRoundTrip(texts, L"CString") != ePassed ||
        serializationRoundTrip(points, L"CbVector3f") != ePassed ||
        serializationRoundTrip(nested, L"verschachtelte Arrays") != ePassed)
        return eFailed;

    // Layout: the count, then the elements.
    std::vector<unsigned char> buffer;
    CbStreamWriteBinary output(buffer);
    output << numbers;
    std::uint32_t count = 0;
    std::memcpy(&count, buffer.data(), 4);
    if (buffer.size() != 4 + 4000 || count != 1000)
        return fail(L"Serialisierung schreibt nicht Anzahl und Elemente");

    // Reading into a larger block keeps it.
    CbArray<int> target;
    target.SetCapacity(5000);
    const int* block = target.GetData();
    CbStreamReadBinary input(buffer);
    input >> target;
    if (target.GetData() != block || target.GetCapacity() != 5000 || !(target == numbers))
        return fail(L"Lesen in einen großen Block legt ihn neu an");

    // A file: written atomically, read back.
    const std::string path = ZqTestEnvironment::GetScratchDirectory() + "/cbarray_serialization.bin";
    {
        CbStreamWriteBinary file(path);
        file << texts << numbers;
        file.Close();
    }
    CbArray<CString> textsRead;
    CbArray<int> numbersRead;
    {
        CbStreamReadBinary file(path);
        file >> textsRead >> numbersRead;
    }
    std::remove(path.c_str());
    if (!(textsRead == texts) || !(numbersRead == numbers))
        return fail(L"Serialisierung über Datei verändert das Array");

    // A count marker of 0xFFFFFFFF and truncated data are rejected, and the target keeps its contents.
    const CbArray<int> before = {7, 8, 9};
    std::vector<unsigned char> marker(4, 0xFF);
    marker.resize(64, 0);
    std::vector<unsigned char> truncated(buffer.begin(), buffer.end() - 3);
    std::vector<unsigned char> textBuffer;
    CbStreamWriteBinary textOutput(textBuffer);
    textOutput << texts;
    textBuffer.resize(textBuffer.size() - 10);
    for (const std::vector<unsigned char>* bad : {&marker, &truncated})
    {
        CbArray<int> victim = before;
        CbStreamReadBinary badInput(*bad);
        if (!throws<CbExceptionWrongFileVersion>([&] { badInput >> victim; }))
            return fail(L"Fehlerhafte Daten werden gelesen");
        if (!(victim == before))
            return fail(L"Fehlerhafte Daten verändern das Array");
    }
    CbArray<CString> textVictim = {L"bleibt"};
    if (!throws<CbExceptionWrongFileVersion>(
            [&]
            {
                CbStreamReadBinary badInput(textBuffer);
                badInput >> textVictim;
            }))
        return fail(L"Abgeschnittene Zeichenketten werden gelesen");
    if (textVictim.GetCount() != 1 || textVictim[0] != CString(L"bleibt"))
        return fail(L"Abgeschnittene Zeichenketten verändern das Array");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runDynamicSize()
{
    // Elements of four pairs of 16-bit values: element i holds (i, 0), (i, 1), (i, 2), (i, 3).
    constexpr unsigned int kElements = 1000;
    ZqArrayDynamicSize array(4 * 2 * sizeof(std::uint16_t));
    for (unsigned int i = 0; i < kElements; ++i)
    {
        std::uint16_t element[8];
        for (std::uint16_t pair = 0; pair < 4; ++pair)
        {
            element[2 * pair] = static_cast<std::uint16_t>(i);
            element[2 * pair + 1] = pair;
        }
        array.Add(element);
    }
    const unsigned char* data = array.GetData();
    for (unsigned int i = 0; i < kElements; ++i)
    {
        const unsigned char* element = data + std::size_t(i) * array.GetElementSize();
        for (std::uint16_t pair = 0; pair < 4; ++pair)
        {
            std::uint16_t values[2];
            std::memcpy(values, element + pair * sizeof(values), sizeof(values));
            if (values[0] != i || values[1] != pair)
                return fail(L"ZqArrayDynamicSize liefert falsches Wertepaar");
        }
    }

    array.SetCount(8);
    array.SetMemoryElementCount(4, true);
    if (array.GetCount() != 8)
        return fail(L"SetMemoryElementCount(4, true) verändert die Anzahl");
    array.SetMemoryElementCount(4, false);
    if (array.GetCount() != 4)
        return fail(L"SetMemoryElementCount(4, false) kürzt nicht auf 4");
    array.SetElementSize(0);
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runCopies()
{
    CbArray<SCounted> original(3);
    for (int i = 0; i < 100; ++i)
        original.Add(SCounted(i));
    CbArray<SCounted> copy(original);
    if (!(copy == original) || copy.GetData() == original.GetData() || copy.GetCapacity() != 100 ||
        copy.GetGrowBy() != 3 || SCounted::s_live != 200)
        return fail(L"Kopierkonstruktor kopiert nicht tief");
    copy[5].value = -5;
    if (original[5].value != 5)
        return fail(L"Kopie teilt Elemente mit dem Original");

    // Into a larger block: the block and the target's grow-by stay.
    CbArray<SCounted> large(11);
    large.SetCapacity(500);
    const SCounted* block = large.GetData();
    large = original;
    if (large.GetData() != block || large.GetGrowBy() != 11 || !(large == original))
        return fail(L"Zuweisung in großen Block legt neu an");
    // Into a smaller array, and shrinking again.
    CbArray<SCounted> small = {SCounted(1)};
    small = original;
    if (!(small == original) || small.GetCapacity() != 100)
        return fail(L"Zuweisung in kleines Array falsch");
    small = CbArray<SCounted>{SCounted(4), SCounted(5)};
    if (small.GetCount() != 2 || small[1].value != 5)
        return fail(L"Zuweisung eines kürzeren Arrays falsch");
    const CbArray<SCounted>& alias = large;
    large = alias;
    if (!(large == original))
        return fail(L"Zuweisung an sich selbst verändert das Array");
    if (SCounted::s_live != 302)
        return fail(L"Kopien erzeugen oder verlieren Elemente");

    // A copy that fails halfway leaves the target as it was and leaks nothing.
    CbArray<SCounted> target = {SCounted(-1), SCounted(-2)};
    SCounted::s_copiesUntilThrow = 50;
    const bool refused = throws<std::runtime_error>([&] { target = original; });
    SCounted::Reset();
    if (!refused)
        return fail(L"Fehlschlagende Kopie wird nicht gemeldet");
    if (target.GetCount() != 2 || target[1].value != -2 || SCounted::s_live != 304)
        return fail(L"Fehlschlagende Kopie verändert das Ziel oder verliert Elemente");

    const CbArray<CString> texts = {L"ä", L"ö"};
    CbArray<CString> textCopy = texts;
    textCopy[0] += L"x";
    if (texts[0] != CString(L"ä") || textCopy[0] != CString(L"äx"))
        return fail(L"Kopie von CString-Arrays nicht tief");
    const CbArray<int> empty;
    const CbArray<int> emptyCopy(empty);
    if (emptyCopy.GetData() || emptyCopy.GetCapacity())
        return fail(L"Kopie eines leeren Arrays legt einen Block an");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runAlgorithms()
{
    std::mt19937 random(77u);
    CbArray<int> array;
    std::vector<int> model;
    for (int i = 0; i < 2000; ++i)
    {
        const int value = static_cast<int>(random() % 500);
        array.Add(value);
        model.push_back(value);
    }
    if (std::accumulate(array.begin(), array.end(), 0LL) !=
            std::accumulate(model.begin(), model.end(), 0LL) ||
        std::count(array.begin(), array.end(), 17) != std::count(model.begin(), model.end(), 17) ||
        *std::max_element(array.begin(), array.end()) != *std::max_element(model.begin(), model.end()))
        return fail(L"accumulate/count/max_element falsch");
    if (std::find(array.begin(), array.end(), model[1234]) - array.begin() !=
        std::find(model.begin(), model.end(), model[1234]) - model.begin())
        return fail(L"std::find falsch");

    std::sort(array.begin(), array.end());
    std::sort(model.begin(), model.end());
    if (!std::is_sorted(array.begin(), array.end()) ||
        !std::equal(array.begin(), array.end(), model.begin(), model.end()))
        return fail(L"std::sort falsch");
    if (std::lower_bound(array.begin(), array.end(), 250) - array.begin() !=
        std::lower_bound(model.begin(), model.end(), 250) - model.begin())
        return fail(L"std::lower_bound falsch");

    // unique + RemoveAt: the erase idiom.
    const auto last = std::unique(array.begin(), array.end());
    array.RemoveAt(static_cast<unsigned int>(last - array.begin()),
                   static_cast<unsigned int>(array.end() - last));
    model.erase(std::unique(model.begin(), model.end()), model.end());
    if (!std::equal(array.begin(), array.end(), model.begin(), model.end()))
        return fail(L"std::unique mit RemoveAt falsch");

    std::reverse(array.begin(), array.end());
    if (!std::equal(array.rbegin(), array.rend(), model.begin(), model.end()))
        return fail(L"std::reverse falsch");

    CbArray<long long> squares;
    squares.SetCount(array.GetCount());
    std::transform(array.begin(), array.end(), squares.begin(), [](int v) { return 1LL * v * v; });
    std::ranges::sort(squares, std::greater<>());
    for (unsigned int i = 0; i < squares.GetCount(); ++i)
        if (squares[i] != 1LL * model[model.size() - 1 - i] * model[model.size() - 1 - i])
            return fail(L"std::transform oder std::ranges::sort falsch");

    std::vector<int> copied;
    std::copy(array.Reversed().begin(), array.Reversed().end(), std::back_inserter(copied));
    if (copied != model)
        return fail(L"std::copy über Rückwärts-Bereich falsch");
    std::fill(array.begin(), array.end(), 3);
    if (std::any_of(array.begin(), array.end(), [](int v) { return v != 3; }))
        return fail(L"std::fill falsch");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runInitializerList()
{
    const CbArray<int> numbers = {5, 6, 7, 8};
    if (numbers.GetCount() != 4 || numbers.GetCapacity() != 4 || numbers[0] != 5 || numbers[3] != 8)
        return fail(L"Konstruktion aus Initialisierungsliste falsch");
    const CbArray<int> none = {};
    if (!none.IsEmpty() || none.GetData() || none.GetDataEnd())
        return fail(L"Leere Initialisierungsliste legt Elemente an");

    CbArray<int> assigned;
    assigned.SetCapacity(10);
    const int* block = assigned.GetData();
    assigned = {1, 2, 3};
    if (assigned.GetCount() != 3 || assigned.GetData() != block || assigned[2] != 3)
        return fail(L"Zuweisung einer Initialisierungsliste falsch");
    assigned = {};
    if (!assigned.IsEmpty() || assigned.GetDataEnd())
        return fail(L"Zuweisung einer leeren Initialisierungsliste leert nicht");

    const CbArray<CString> texts = {L"Hülle", L"Punkt"};
    const CbArray<CbVector3f> points = {{1, 2, 3}, {4, 5, 6}};
    const CbArray<CbArray<int>> nested = {{1, 2}, {3}, {}};
    if (texts[0] != CString(L"Hülle") || !(points[1] == CbVector3f(4, 5, 6)) || nested.GetCount() != 3 ||
        nested[0].GetCount() != 2 || nested[1][0] != 3 || !nested[2].IsEmpty())
        return fail(L"Initialisierungsliste mit Klassen-Elementen falsch");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runRemove()
{
    CbArray<SCounted> array;
    for (int i = 0; i < 20; ++i)
        array.Add(SCounted(i % 5));
    array.RemoveAt(0);
    array.RemoveAt(array.GetCount() - 1);
    array.RemoveAt(5, 3);
    // 1 2 3 4 0 | 4 0 1 2 3 4 0 1 2 3
    const int afterRemoveAt[] = {1, 2, 3, 4, 0, 4, 0, 1, 2, 3, 4, 0, 1, 2, 3};
    if (array.GetCount() != 15 || !std::equal(array.begin(), array.end(), std::begin(afterRemoveAt),
                                              [](const SCounted& a, int b) { return a.value == b; }))
        return fail(L"RemoveAt entfernt falsche Elemente");
    const unsigned int fours = array.Remove(SCounted(4));
    if (fours != 3 || array.GetCount() != 12 || SCounted::s_live != 12)
        return fail(L"Remove(Wert) entfernt falsch");
    if (array.RemoveIf([](const SCounted& e) { return e.value == 0; }) != 3 || array.GetCount() != 9)
        return fail(L"RemoveIf entfernt falsch");
    // The value to remove may be an element of the array itself.
    if (array.Remove(array[0]) != 3 || array.GetCount() != 6)
        return fail(L"Remove mit eigenem Element entfernt falsch");

    const unsigned int capacity = array.GetCapacity();
    if (!throws<CbExceptionContainer>([&] { array.RemoveAt(4, 3); }))
        return fail(L"RemoveAt über das Ende hinaus wird nicht abgelehnt");
    if (array.GetCount() != 6)
        return fail(L"Abgelehntes RemoveAt verändert das Array");
    while (!array.IsEmpty())
        array.RemoveLast();
    if (array.GetDataEnd() != nullptr || array.GetCapacity() != capacity || SCounted::s_live != 0)
        return fail(L"Nach Entfernen des letzten Elements ist der End-Zeiger nicht null");
    if (!throws<CbExceptionContainer>([&] { array.RemoveLast(); }))
        return fail(L"RemoveLast auf leerem Array wird nicht abgelehnt");
    array.Add(SCounted(1));
    array.RemoveAll();
    if (array.GetData() || array.GetCapacity() || array.GetCount() || SCounted::s_live != 0)
        return fail(L"RemoveAll gibt den Block nicht frei");
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runHugeAllocation()
{
    // More than a std::size_t can count: rejected before the allocator is asked.
    CbArray<SBeyondAddressSpace> beyond;
    if (!throws<CbExceptionMemory>([&] { beyond.Reserve(UINT_MAX); }))
        return fail(L"Überlauf der Blockgröße wird nicht gemeldet");
    if (beyond.GetData() || beyond.GetCapacity())
        return fail(L"Überlauf der Blockgröße hinterlässt einen Block");

    if (!allocatorMayReturnNull())
    {
        WriteMessage(eInfo,
                     L"Allokator des Sanitizers bricht ab statt null zu liefern "
                     L"(ASAN_OPTIONS=allocator_may_return_null=1 fehlt): nur der Überlauf wurde geprüft\n");
        return ePassed;
    }

    // 2^62 bytes on an empty array.
    CbArray<SGigabyte> gigabytes;
    if (!throws<CbExceptionMemory>([&] { gigabytes.SetCapacity(UINT_MAX); }))
        return fail(L"Unerfüllbare Allokation wird nicht gemeldet");
    if (gigabytes.GetData() || gigabytes.GetCapacity())
        return fail(L"Unerfüllbare Allokation hinterlässt einen Block");

    // 2^52 bytes for an array that holds elements: it keeps its block and elements, and the element
    // to add is never made.
    CbArray<SCountedMegabyte> megabytes;
    megabytes.SetCapacity(3);
    for (int i = 0; i < 3; ++i)
        megabytes.Emplace(i);
    megabytes.SetGrowBy(UINT_MAX - 3);
    const SCountedMegabyte* block = megabytes.GetData();
    const int live = SCounted::s_live;
    for (int attempt = 0; attempt < 2; ++attempt)
    {
        try
        {
            if (attempt == 0)
                megabytes.SetCapacity(UINT_MAX);
            else
                megabytes.Emplace(99);
            return fail(L"Unerfüllbare Allokation wird nicht gemeldet");
        }
        catch (const CbExceptionMemory&)
        {
        }
        if (megabytes.GetData() != block || megabytes.GetCount() != 3 || megabytes.GetCapacity() != 3 ||
            megabytes[2].value != 2 || SCounted::s_live != live)
            return fail(L"Unerfüllbare Allokation verändert das Array oder verliert Elemente");
    }
    return ePassed;
}

ZqUnitTest::EResult CbArray_UnitTest::runGrow()
{
    CbArray<SCounted> array;
    if (array.GetCapacity() != 0 || array.GetData() || array.GetDataEnd())
        return fail(L"Neues Array hat einen Block");
    unsigned int expectedCapacity = 0;
    for (int i = 0; i < 1025; ++i)
    {
        const bool full = array.GetCount() == array.GetCapacity();
        if (full)
            expectedCapacity = expectedCapacity ? 2 * expectedCapacity : 1;
        if (array.Add(SCounted(i)) != full)
            return fail(L"Add meldet die Reallokation falsch");
        if (array.GetCapacity() != expectedCapacity)
            return fail(L"Kapazität wächst nicht durch Verdoppeln ab 1");
        if (array.GetDataEnd() != array.GetData() + array.GetCount() || array.GetLast().value != i)
            return fail(L"End-Zeiger oder Element nach Add falsch");
    }
    for (unsigned int i = 0; i < array.GetCount(); ++i)
        if (array[i].value != static_cast<int>(i))
            return fail(L"Wachstum verändert Elemente");
    if (SCounted::s_copies != 0)
        return fail(L"Wachstum kopiert Elemente statt sie zu verschieben");

    CbArray<int> stepwise(5);
    for (int i = 0; i < 5; ++i)
        stepwise.Add(i);
    if (stepwise.GetCapacity() != 5 || !stepwise.Add(5) || stepwise.GetCapacity() != 10)
        return fail(L"Volles Array der Kapazität 5 wächst nicht auf 10");
    stepwise.SetGrowBy(0);
    for (int i = 6; i <= 10; ++i)
        stepwise.Add(i);
    if (stepwise.GetCapacity() != 20)
        return fail(L"Nach SetGrowBy(0) wird nicht verdoppelt");

    CbArray<int> sized;
    sized.SetCount(9);
    if (sized.GetCapacity() != 9 || sized[8] != 0)
        return fail(L"SetCount legt nicht genau die Anzahl an");
    sized.SetCount(10);
    if (sized.GetCapacity() != 18 || sized[9] != 0)
        return fail(L"SetCount wächst nicht um einen Wachstumsschritt");
    sized.Reserve(5);
    sized.FreeExtra();
    if (sized.GetCapacity() != 10 || sized.GetCount() != 10)
        return fail(L"Reserve oder FreeExtra falsch");
    return ePassed;
}
