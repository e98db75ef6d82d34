// Test of the queue: order, front and back, node reuse through the plex manager, copies, moves,
// element lifetimes and the errors of an empty queue.

#include "basepool/cbqueue.h"
#include "zqbase/zqunittest.h"

#include <memory>

class CbQueue_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(CbQueue_UnitTest)

protected:
    CString getSubtestName(unsigned int index) override;
    EResult runUnitTest(unsigned int index) override;

private:
    EResult aborted(const wchar_t* message) const;
};

CB_IMPLEMENT_RTTI(CbQueue_UnitTest, ZqUnitTest::RTTI);

CString CbQueue_UnitTest::getSubtestName(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "CbQueue_UnitTest::getSubtestName");
    return L"Unit-Test";
}

ZqUnitTest::EResult CbQueue_UnitTest::aborted(const wchar_t* message) const
{
    WriteMessage(eError, CString(message) + L"\n");
    return eAborted;
}

ZqUnitTest::EResult CbQueue_UnitTest::runUnitTest(unsigned int index)
{
    if (index > 0)
        CB_THROW(CbException, "CbQueue_UnitTest::runUnitTest");

    CbQueue<int> queue(10);
    for (int i = 0; i < 25; ++i)
        queue.Push(i);
    if (queue.GetCount() != 25 || queue.Front() != 0 || queue.Back() != 24)
        return aborted(L"Push: Anzahl, Front oder Back falsch");
    for (int i = 0; i < 10; ++i)
        if (queue.Pop() != i)
            return aborted(L"Pop liefert nicht die Reihenfolge des Einfügens");

    // Popped nodes are reused: a queue in steady use needs no further blocks.
    const unsigned int blocks = queue.GetPlexManager().GetBlockCount();
    for (int round = 0; round < 1000; ++round)
    {
        queue.Push(100 + round);
        queue.Pop();
    }
    if (queue.GetPlexManager().GetBlockCount() != blocks || queue.GetCount() != 15 || queue.Front() != 1085 ||
        queue.Back() != 1099)
        return aborted(L"Wechselndes Push/Pop verbraucht neue Blöcke oder verliert Elemente");

    int value = -1;
    if (!queue.TryPop(value) || value != 1085)
        return aborted(L"TryPop liefert nicht das erste Element");
    CbQueue<int> empty;
    if (empty.TryPop(value) || value != 1085)
        return aborted(L"TryPop einer leeren Schlange ändert den Wert");
    try
    {
        empty.Pop();
        return aborted(L"Pop einer leeren Schlange wirft keine CbExceptionContainer");
    }
    catch (const CbExceptionContainer&)
    {
    }

    auto shared = std::make_shared<int>(7);
    CbQueue<std::shared_ptr<int>> owners(10);
    for (int i = 0; i < 30; ++i)
        owners.Push(shared);
    CbQueue<std::shared_ptr<int>> copy(owners);
    CbQueue<std::shared_ptr<int>> moved(std::move(copy));
    owners.Pop();
    if (shared.use_count() != 60 || !copy.IsEmpty() || moved.GetCount() != 30)
        return aborted(L"Kopie, Move oder Pop halten die Elemente falsch");
    owners.RemoveAll();
    moved = CbQueue<std::shared_ptr<int>>(10);
    if (shared.use_count() != 1 || !owners.IsEmpty() || !moved.IsEmpty())
        return aborted(L"RemoveAll oder Zuweisung zerstören die Elemente nicht");
    return ePassed;
}
