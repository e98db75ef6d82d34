// Test of the linked lists: their operations on positions, iterators, copies, shared plex managers and
// element lifetimes, and a benchmark that builds and walks lists of both node policies against
// std::list.

#include "basepool/cblist.h"
#include "zqbase/cbtimer.h"
#include "zqbase/zqbenchmark.h"
#include "zqbase/zqunittest.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <list>
#include <memory>
#include <numeric>
#include <vector>

namespace
{
// Counts live instances, to see that every element a list built is destroyed again.
class CCounted
{
public:
    explicit CCounted(int value = 0) : m_value(value) { ++s_alive; }
    CCounted(const CCounted& other) : m_value(other.m_value) { ++s_alive; }
    CCounted& operator=(const CCounted&) = default;
    ~CCounted() { --s_alive; }
    int GetValue() const { return m_value; }
    bool operator==(const CCounted& other) const { return m_value == other.m_value; }

    static int s_alive;

private:
    int m_value;
};
int CCounted::s_alive = 0;

template <class List> std::vector<int> contents(const List& list)
{
    return std::vector<int>(list.begin(), list.end());
}
} // namespace

class CbList_UnitTest : public ZqUnitTest, public ZqBenchmark
{
    CB_DECLARE_RTTI(CbList_UnitTest)

protected:
    unsigned int getSubtestCount() const override { return 2; }
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

    unsigned int getBenchmarkCount() const override { return 22; }
    CString getBenchmarkName(unsigned int index) override;
    unsigned int getGroup(unsigned int index) const override { return index < 10 ? 0 : 1; }
    unsigned int getIterationCount() const override { return 5; }
    bool runBenchmark(unsigned int index, SBenchmarkData& data) override;
    void dump(const CString& text) override { WriteMessage(eInfo, L"\t" + text); }
    void onBeforeRun() override;
    void onAfterRun(bool success) override;

private:
    using COptimizedList = CbListEx<std::int64_t, CbListNodePolicyOptimized<std::int64_t>>;
    static constexpr std::int64_t kElements = 100000;
    static constexpr std::int64_t kSum = kElements * (kElements - 1) / 2;

    bool fail(const wchar_t* message) const;
    bool checkAddAndPositions() const;
    bool checkInsertRemoveFind() const;
    bool checkIterators() const;
    bool checkCopyMoveCompare() const;
    bool checkSharedPlexManager() const;
    bool checkLifetimesAndErrors() const;

    template <class List> bool buildCase(bool forward, SBenchmarkData& data);
    bool finishCase(std::int64_t sum, double seconds, SBenchmarkData& data);

    std::unique_ptr<CbList<std::int64_t>> m_standard;
    std::unique_ptr<COptimizedList> m_optimized;
    std::unique_ptr<std::list<std::int64_t>> m_std;
};

CB_IMPLEMENT_RTTI(CbList_UnitTest, ZqUnitTest::RTTI, ZqBenchmark::RTTI);

CString CbList_UnitTest::getSubtestName(unsigned int index)
{
    switch (index)
    {
    case 0:
        return L"Unit-Test";
    case 1:
        return L"Benchmark";
    }
    CB_THROW(CbException, "CbList_UnitTest::getSubtestName");
}

ZqUnitTest::EResult CbList_UnitTest::runUnitTest(unsigned int index)
{
    switch (index)
    {
    case 0:
        for (auto check :
             {&CbList_UnitTest::checkAddAndPositions, &CbList_UnitTest::checkInsertRemoveFind,
              &CbList_UnitTest::checkIterators, &CbList_UnitTest::checkCopyMoveCompare,
              &CbList_UnitTest::checkSharedPlexManager, &CbList_UnitTest::checkLifetimesAndErrors})
            if (!(this->*check)())
                return eFailed;
        return ePassed;
    case 1:
        return RunBenchmark() ? ePassed : eFailed;
    }
    CB_THROW(CbException, "CbList_UnitTest::runUnitTest");
}

bool CbList_UnitTest::fail(const wchar_t* message) const
{
    WriteMessage(eError, CString(message) + L"\n");
    return false;
}

bool CbList_UnitTest::checkAddAndPositions() const
{
    CbList<int> list;
    for (int i = 1; i <= 3; ++i)
        list.AddTail(i);
    list.AddHead(0);
    if (list.GetCount() != 4 || list.GetHead() != 0 || list.GetTail() != 3)
        return fail(L"AddHead/AddTail: Anzahl, Kopf oder Ende falsch");

    std::vector<int> forward;
    for (CbListPosition pos = list.GetHeadPosition(); pos;)
        forward.push_back(list.GetNext(pos));
    std::vector<int> backward;
    for (CbListPosition pos = list.GetTailPosition(); pos;)
        backward.push_back(list.GetPrev(pos));
    if (forward != std::vector<int>{0, 1, 2, 3} || backward != std::vector<int>{3, 2, 1, 0})
        return fail(L"Durchlauf über CbListPosition liefert falsche Reihenfolge");
    if (list.GetAt(list.FindIndex(2)) != 2 || list.FindIndex(4))
        return fail(L"FindIndex liefert falsche Position");
    return true;
}

bool CbList_UnitTest::checkInsertRemoveFind() const
{
    CbList<int> list{1, 3, 5};
    const CbListPosition three = list.Find(3);
    list.InsertBefore(three, 2);
    list.InsertAfter(three, 4);
    list.InsertBefore(nullptr, 0);
    list.InsertAfter(nullptr, 6);
    if (contents(list) != std::vector<int>{0, 1, 2, 3, 4, 5, 6})
        return fail(L"InsertBefore/InsertAfter fügen an falscher Stelle ein");

    list.SetAt(three, 30);
    list.RemoveAt(list.Find(0));
    list.RemoveAt(list.Find(6));
    if (list.RemoveHead() != 1 || list.RemoveTail() != 5 || contents(list) != std::vector<int>{2, 30, 4})
        return fail(L"SetAt/RemoveAt/RemoveHead/RemoveTail liefern falsche Liste");
    if (list.Find(30) != three || list.Find(30, three) || list.Find(99))
        return fail(L"Find liefert falsche Position");

    list.MoveToHead(list.Find(4));
    list.MoveToTail(list.Find(2));
    if (contents(list) != std::vector<int>{4, 30, 2} || list.GetHead() != 4 || list.GetTail() != 2)
        return fail(L"MoveToHead/MoveToTail verketten falsch");
    list.Reverse();
    if (contents(list) != std::vector<int>{2, 30, 4} || *std::prev(list.end()) != 4)
        return fail(L"Reverse verkettet falsch");
    list.RemoveAll();
    if (!list.IsEmpty() || list.GetHeadPosition() || list.begin() != list.end())
        return fail(L"RemoveAll hinterlässt Elemente");
    return true;
}

bool CbList_UnitTest::checkIterators() const
{
    CbList<int> list;
    for (int i = 0; i < 100; ++i)
        list.AddTail(i);
    if (std::accumulate(list.begin(), list.end(), 0) != 4950)
        return fail(L"Iterator (vorwärts) liefert falsche Summe");
    std::vector<int> reversed(list.rbegin(), list.rend());
    if (reversed.size() != 100 || reversed.front() != 99 || reversed.back() != 0)
        return fail(L"Iterator (rückwärts) liefert falsche Reihenfolge");

    auto it = std::find(list.begin(), list.end(), 50);
    it = list.Erase(it);
    if (it == list.end() || *it != 51 || list.GetCount() != 99 || list.Find(50))
        return fail(L"Erase liefert falschen Nachfolger");
    for (int& value : list)
        value *= 2;
    const CbList<int>& constList = list;
    CbList<int>::ConstIterator last = --constList.end();
    if (*last != 198 || list.GetHead() != 0)
        return fail(L"Schreiben über Iterator oder --end() falsch");
    return true;
}

bool CbList_UnitTest::checkCopyMoveCompare() const
{
    CbList<CString> names{L"Anna", L"Bernd", L"Clara"};
    CbList<CString> copy(names);
    if (!(copy == names))
        return fail(L"Kopie ist nicht gleich dem Original");
    copy.GetHead() = L"Änne";
    if (names.GetHead() != CString(L"Anna") || copy == names)
        return fail(L"Kopie teilt Elemente mit dem Original");

    CbList<CString> moved(std::move(copy));
    if (!copy.IsEmpty() || moved.GetCount() != 3 || moved.GetHead() != CString(L"Änne"))
        return fail(L"Move-Konstruktor übernimmt die Elemente nicht");
    names = moved;
    moved.AddTail(moved);
    if (!(names == CbList<CString>{L"Änne", L"Bernd", L"Clara"}) || moved.GetCount() != 6 ||
        moved.GetTail() != CString(L"Clara"))
        return fail(L"Zuweisung oder Anhängen der eigenen Liste falsch");
    return true;
}

bool CbList_UnitTest::checkSharedPlexManager() const
{
    auto plex = CbMakeSharedPlexManager<CbNodeLinked<int>>(16u);
    CbListEx<int, CbListNodePolicyOptimized<int>> a(plex), b(plex);
    for (int i = 0; i < 10; ++i)
        (i % 2 ? b : a).AddTail(i);
    const CbListPosition firstOfB = b.GetHeadPosition();
    a.AddTail(std::move(b));
    if (a.GetCount() != 10 || !b.IsEmpty() || a.Find(1) != firstOfB)
        return fail(L"Anhängen bei gemeinsamem Plex-Manager verkettet nicht um");

    const std::size_t available = plex->CountAvailableNodes();
    a.RemoveAll();
    if (plex->CountAvailableNodes() != available + 10 || plex->GetBlockCount() != 1)
        return fail(L"RemoveAll gibt die Knoten nicht an den gemeinsamen Plex-Manager zurück");
    for (int i = 0; i < 16; ++i)
        b.AddTail(i);
    if (plex->GetBlockCount() != 1)
        return fail(L"Freigegebene Knoten werden nicht wiederverwendet");
    return true;
}

bool CbList_UnitTest::checkLifetimesAndErrors() const
{
    {
        CbList<CCounted> list;
        for (int i = 0; i < 50; ++i)
            list.EmplaceTail(i);
        list.RemoveHead();
        list.RemoveAt(list.Find(CCounted(10)));
        CbList<CCounted> copy = list;
        copy.RemoveAll();
        if (CCounted::s_alive != 48)
            return fail(L"Elemente werden nicht genau einmal zerstört");
    }
    if (CCounted::s_alive != 0)
        return fail(L"Destruktor der Liste zerstört nicht alle Elemente");

    CbList<int> empty;
    bool thrown = false;
    try
    {
        empty.GetHead();
    }
    catch (const CbExceptionContainer&)
    {
        thrown = true;
    }
    if (!thrown)
        return fail(L"GetHead einer leeren Liste wirft keine CbExceptionContainer");
    return true;
}

CString CbList_UnitTest::getBenchmarkName(unsigned int index)
{
    static const wchar_t* const names[] = {
        L"[00] CbListEx Standard aufbauen (vorwärts)",
        L"[01] CbListEx Standard aufbauen (rückwärts)",
        L"[02] CbListEx Optimiert aufbauen (vorwärts)",
        L"[03] CbListEx Optimiert aufbauen (rückwärts)",
        L"[04] CList aufbauen (vorwärts)",
        L"[05] CList aufbauen (rückwärts)",
        L"[06] CAtlList aufbauen (vorwärts)",
        L"[07] CAtlList aufbauen (rückwärts)",
        L"[08] std::list aufbauen (vorwärts)",
        L"[09] std::list aufbauen (rückwärts)",
        L"[10] CbListEx Standard über CbListPosition (vorwärts)",
        L"[11] CbListEx Standard über CbListPosition (rückwärts)",
        L"[12] CbListEx Standard über CbListEx::Iterator (vorwärts)",
        L"[13] CbListEx Standard über CbListEx::Iterator (rückwärts)",
        L"[14] CbListEx Optimiert über CbListPosition (vorwärts)",
        L"[15] CbListEx Optimiert über CbListEx::Iterator (vorwärts)",
        L"[16] CList über POSITION (vorwärts)",
        L"[17] CList über POSITION (rückwärts)",
        L"[18] CAtlList über POSITION (vorwärts)",
        L"[19] CAtlList über POSITION (rückwärts)",
        L"[20] std::list mit Iterator (vorwärts)",
        L"[21] std::list mit Iterator (rückwärts)",
    };
    return index < std::size(names) ? CString(names[index]) : CString();
}

void CbList_UnitTest::onBeforeRun()
{
    WriteMessage(eInfo, CbFormat(L"Benchmark CbListEx (Standard, Optimiert) vs. std::list, %lld Elemente\n",
                                 static_cast<long long>(kElements)));
    m_standard = std::make_unique<CbList<std::int64_t>>();
    m_optimized = std::make_unique<COptimizedList>();
    m_std = std::make_unique<std::list<std::int64_t>>();
    for (std::int64_t i = 0; i < kElements; ++i)
    {
        m_standard->AddTail(i);
        m_optimized->AddTail(i);
        m_std->push_back(i);
    }
}

void CbList_UnitTest::onAfterRun(bool)
{
    m_standard.reset();
    m_optimized.reset();
    m_std.reset();
    WriteMessage(eInfo, L"Gruppe 0: Aufbau einer Liste (Zeit ohne Abbau), Gruppe 1: Durchlauf mit Summe. "
                        L"CList und CAtlList gibt es auf dieser Plattform nicht.\n");
}

bool CbList_UnitTest::finishCase(std::int64_t sum, double seconds, SBenchmarkData& data)
{
    if (sum != kSum)
    {
        WriteMessage(eError, L"Summe ist nicht korrekt");
        return false;
    }
    data.AddSample(seconds);
    data.result = static_cast<double>(sum);
    return true;
}

template <class List> bool CbList_UnitTest::buildCase(bool forward, SBenchmarkData& data)
{
    List list;
    CbTimer timer;
    if constexpr (std::is_same_v<List, std::list<std::int64_t>>)
    {
        for (std::int64_t i = 0; i < kElements; ++i)
            forward ? list.push_back(i) : list.push_front(i);
    }
    else
    {
        for (std::int64_t i = 0; i < kElements; ++i)
            forward ? list.AddTail(i) : list.AddHead(i);
    }
    const double seconds = timer.GetElapsedSeconds();
    std::size_t count;
    std::int64_t head;
    if constexpr (std::is_same_v<List, std::list<std::int64_t>>)
    {
        count = list.size();
        head = list.front();
    }
    else
    {
        count = list.GetCount();
        head = list.GetHead();
    }
    if (count != static_cast<std::size_t>(kElements) || head != (forward ? 0 : kElements - 1))
    {
        WriteMessage(eError, L"Liste falsch aufgebaut");
        return false;
    }
    return finishCase(std::accumulate(list.begin(), list.end(), std::int64_t(0)), seconds, data);
}

bool CbList_UnitTest::runBenchmark(unsigned int index, SBenchmarkData& data)
{
    switch (index)
    {
    case 0:
    case 1:
        return buildCase<CbList<std::int64_t>>(index == 0, data);
    case 2:
    case 3:
        return buildCase<COptimizedList>(index == 2, data);
    case 4:
    case 5:
    case 6:
    case 7:
    case 16:
    case 17:
    case 18:
    case 19:
        data.notAvailable = true;
        return true;
    case 8:
    case 9:
        return buildCase<std::list<std::int64_t>>(index == 8, data);
    }

    std::int64_t sum = 0;
    CbTimer timer;
    switch (index)
    {
    case 10:
        for (CbListPosition pos = m_standard->GetHeadPosition(); pos;)
            sum += m_standard->GetNext(pos);
        break;
    case 11:
        for (CbListPosition pos = m_standard->GetTailPosition(); pos;)
            sum += m_standard->GetPrev(pos);
        break;
    case 12:
        for (auto it = m_standard->begin(); it != m_standard->end(); ++it)
            sum += *it;
        break;
    case 13:
        for (auto it = m_standard->end(); it != m_standard->begin();)
            sum += *--it;
        break;
    case 14:
        for (CbListPosition pos = m_optimized->GetHeadPosition(); pos;)
            sum += m_optimized->GetNext(pos);
        break;
    case 15:
        for (auto it = m_optimized->begin(); it != m_optimized->end(); ++it)
            sum += *it;
        break;
    case 20:
        for (auto it = m_std->begin(); it != m_std->end(); ++it)
            sum += *it;
        break;
    case 21:
        for (auto it = m_std->rbegin(); it != m_std->rend(); ++it)
            sum += *it;
        break;
    default:
        WriteMessage(eError, L"Unbekannter Benchmark");
        return false;
    }
    return finishCase(sum, timer.GetElapsedSeconds(), data);
}
