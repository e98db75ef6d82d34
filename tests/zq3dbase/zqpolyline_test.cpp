// The polyline chain: links stay consistent in both directions through every kind of edit, closed
// polylines wrap around, vertices keep their addresses, copies are deep, and the stream form round-
// trips and rejects damaged data without touching the polyline.

#include "zq3dbase/zqpolyline3d.h"

#include "basepool/cbexception.h"
#include "basepool/cbsmartpointer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace
{
std::vector<float> xsForward(const ZqPolyline3DBase& polyline)
{
    std::vector<float> xs;
    for (const ZqPolylineVertex& vertex : polyline)
        xs.push_back(vertex.GetPosition().x);
    return xs;
}

// Walks from the tail along the backward links and checks they mirror the forward ones.
::testing::AssertionResult linksAgree(const ZqPolyline3DBase& polyline)
{
    std::vector<const ZqPolylineVertex*> forward, backward;
    for (const ZqPolylineVertex& vertex : polyline)
        forward.push_back(&vertex);
    for (const ZqPolylineVertex* vertex = polyline.GetTailVertex(); vertex; vertex = vertex->GetPrev())
        backward.insert(backward.begin(), vertex);
    if (forward != backward)
        return ::testing::AssertionFailure() << "backward links differ from forward ones";
    if (forward.size() != polyline.GetVertexCount())
        return ::testing::AssertionFailure()
               << forward.size() << " linked, count " << polyline.GetVertexCount();
    if (!forward.empty() && (forward.front() != polyline.GetHeadVertex() || forward.front()->GetPrev()))
        return ::testing::AssertionFailure() << "head is not the first linked vertex";
    return ::testing::AssertionSuccess();
}

CbVector3f at(float x)
{
    return {x, 0, 0};
}
} // namespace

TEST(ZqPolyline, EditsAtHeadTailAndMiddleKeepBothDirectionsLinked)
{
    ZqPolyline3D line;
    EXPECT_EQ(line.GetHeadVertex(), nullptr);
    ZqPolylineVertex* two = line.AppendVertexTail(at(2));
    line.AppendVertexHead(at(0));
    line.InsertVertexAfter(line.GetHeadVertex(), at(1));
    line.InsertVertexAfter(two, at(3));
    EXPECT_EQ(xsForward(line), (std::vector<float>{0, 1, 2, 3}));
    EXPECT_TRUE(linksAgree(line));

    line.RemoveVertex(line.GetHeadVertex());
    line.RemoveVertex(line.GetTailVertex());
    EXPECT_EQ(xsForward(line), (std::vector<float>{1, 2}));
    EXPECT_TRUE(linksAgree(line));
    line.RemoveVertex(two);
    line.RemoveVertex(line.GetHeadVertex());
    EXPECT_TRUE(line.IsEmpty());
    EXPECT_EQ(line.GetTailVertex(), nullptr);
    line.AppendVertexHead(at(7));
    EXPECT_EQ(line.GetTailVertex(), line.GetHeadVertex());
    EXPECT_TRUE(linksAgree(line));
}

TEST(ZqPolyline, ClosedPolylineWrapsAroundOpenOneEnds)
{
    ZqPolyline3D line({at(0), at(1), at(2)});
    ZqPolylineVertex* head = line.GetHeadVertex();
    ZqPolylineVertex* tail = line.GetTailVertex();
    EXPECT_EQ(line.GetSuccessor(tail), nullptr);
    EXPECT_EQ(line.GetPredecessor(head), nullptr);
    line.SetClosed(true);
    EXPECT_EQ(line.GetSuccessor(tail), head);
    EXPECT_EQ(line.GetPredecessor(head), tail);
    EXPECT_EQ(tail->GetNext(), nullptr) << "the raw links do not wrap";

    ZqPolyline3D single({at(5)}, true);
    EXPECT_EQ(single.GetSuccessor(single.GetHeadVertex()), single.GetHeadVertex());
}

TEST(ZqPolyline, IndicesFollowTailAppendsAndComputeIndices)
{
    ZqPolyline3D line({at(0), at(1), at(2)});
    EXPECT_EQ(line.GetTailVertex()->GetIndex(), 2u);
    line.AppendVertexHead(at(-1));
    line.computeIndices();
    unsigned int expected = 0;
    for (const ZqPolylineVertex& vertex : line)
        EXPECT_EQ(vertex.GetIndex(), expected++);
}

TEST(ZqPolyline, ReverseTurnsTheChainAround)
{
    ZqPolyline3D line({at(0), at(1), at(2), at(3)});
    line.Reverse();
    EXPECT_EQ(xsForward(line), (std::vector<float>{3, 2, 1, 0}));
    EXPECT_TRUE(linksAgree(line));
    ZqPolyline3D empty;
    empty.Reverse();
    EXPECT_TRUE(linksAgree(empty));
}

TEST(ZqPolyline, VerticesKeepTheirAddressesWhileTheChainGrowsAndShrinks)
{
    ZqPolyline3D line;
    std::vector<ZqPolylineVertex*> vertices;
    for (int i = 0; i < 1000; ++i)
        vertices.push_back(line.AppendVertexTail(at(float(i))));
    for (int i = 0; i < 1000; i += 2)
        line.RemoveVertex(vertices[i]);
    for (int i = 0; i < 300; ++i)
        line.AppendVertexHead(at(-1));
    for (int i = 1; i < 1000; i += 2)
        EXPECT_EQ(vertices[i]->GetPosition().x, float(i));
    EXPECT_EQ(line.GetVertexCount(), 800u);
    EXPECT_TRUE(linksAgree(line));
}

TEST(ZqPolyline, CopiesAreDeepAndMovesEmptyTheSource)
{
    ZqPolyline3D line({at(0), at(1), at(2)}, true);
    ZqPolyline3D copy(line);
    copy.GetHeadVertex()->SetPosition(at(9));
    EXPECT_EQ(line.GetHeadVertex()->GetPosition().x, 0.0f);
    EXPECT_TRUE(copy.IsClosed());
    EXPECT_TRUE(linksAgree(copy));

    ZqPolylineVertex* head = line.GetHeadVertex();
    ZqPolyline3D moved(std::move(line));
    EXPECT_EQ(moved.GetHeadVertex(), head) << "a move hands the vertices over";
    EXPECT_TRUE(line.IsEmpty());
    line.AppendVertexTail(at(4));
    EXPECT_TRUE(linksAgree(line));

    copy = moved;
    EXPECT_EQ(xsForward(copy), (std::vector<float>{0, 1, 2}));
    copy = ZqPolyline3D({at(5)});
    EXPECT_EQ(xsForward(copy), (std::vector<float>{5}));
    EXPECT_FALSE(copy.IsClosed());
}

TEST(ZqPolyline, SharedThroughSmartPointersAndCopiedWithAFreshCount)
{
    CbSmartPointer<ZqPolyline3D> shared(new ZqPolyline3D({at(0), at(1)}));
    CbSmartPointer<ZqPolyline3D> second = shared;
    EXPECT_EQ(shared->GetReferenceCount(), 2u);
    ZqPolyline3D copy(*shared);
    EXPECT_EQ(copy.GetReferenceCount(), 0u);
}

TEST(ZqPolyline, NullVertexThrowsNamingTheOperation)
{
    ZqPolyline3D line({at(0)});
    try
    {
        line.RemoveVertex(nullptr);
        FAIL() << "no exception";
    }
    catch (const CbExceptionPreconditionViolation& e)
    {
        EXPECT_STREQ(e.GetFunction(), "ZqPolyline<class CbVector3f>::RemoveVertex");
    }
    EXPECT_THROW(line.InsertVertexAfter(nullptr, at(1)), CbExceptionPreconditionViolation);
    EXPECT_THROW(line.GetSuccessor(nullptr), CbExceptionPreconditionViolation);
    EXPECT_EQ(line.GetVertexCount(), 1u);
}

TEST(ZqPolyline, StreamRoundTrip)
{
    const ZqPolyline3D line({{1.5f, -2, 3}, {0, 0, 1e-30f}, {4, 5, 6}}, true);
    std::vector<unsigned char> bytes;
    {
        CbStreamWriteBinary out(bytes);
        out << line << ZqPolyline3D();
    }
    EXPECT_EQ(bytes.size(), 2 * (1 + 4) + 3 * 12u);
    CbStreamReadBinary in(bytes);
    ZqPolyline3D read({at(8)}), empty({at(9)});
    in >> read >> empty;
    EXPECT_TRUE(read.IsClosed());
    ASSERT_EQ(read.GetVertexCount(), 3u);
    const ZqPolylineVertex* a = line.GetHeadVertex();
    for (const ZqPolylineVertex& b : read)
    {
        EXPECT_EQ(a->GetPosition(), b.GetPosition());
        a = a->GetNext();
    }
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_FALSE(empty.IsClosed());
}

TEST(ZqPolyline, DamagedStreamThrowsAndLeavesThePolylineAlone)
{
    std::vector<unsigned char> good;
    {
        CbStreamWriteBinary out(good);
        out << ZqPolyline3D({at(1), at(2)});
    }
    std::vector<unsigned char> badFlag = good;
    badFlag[0] = 2;
    std::vector<unsigned char> truncated(good.begin(), good.end() - 1);
    std::vector<unsigned char> hugeCount = good;
    hugeCount[1] = hugeCount[2] = hugeCount[3] = hugeCount[4] = 0xFF;
    for (const auto* bytes : {&badFlag, &truncated, &hugeCount})
    {
        ZqPolyline3D target({at(7)}, true);
        CbStreamReadBinary in(*bytes);
        EXPECT_THROW(in >> target, CbExceptionWrongFileVersion);
        EXPECT_EQ(xsForward(target), (std::vector<float>{7}));
        EXPECT_TRUE(target.IsClosed());
    }
}
