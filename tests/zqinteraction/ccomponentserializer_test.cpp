// Record and replay of port changes: unchanged sessions pass, a changed value of any of the five
// value types is caught naming the port and the instantiation, deferred comparison, and recordings
// that are truncated, name unknown ports or hold other changes are refused.

#include "toolsession.h"

#include <gtest/gtest.h>

namespace zqinteraction
{
namespace
{
// One value per port; a test changes one of them for its replay.
struct SValues
{
    unsigned int count = 3;
    bool flag = true;
    CbVector2f point{1, 2};
    CbVector3f position{1, 2, 3};
    STest probe = MakeProbe(4);
};

void play(SToolSession& session, const SValues& values)
{
    session.Set("Count", values.count);
    session.Set("Flag", values.flag);
    session.Set("Point", values.point);
    session.Set("Position", values.position);
    session.Set("Probe", values.probe);
}

// The recording of play(SValues()); boundaries receives the stream position after each record.
std::vector<unsigned char> record(unsigned int compareMode, std::vector<std::size_t>* boundaries = nullptr)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary out(bytes);
    SToolSession session;
    session.Serialize(out, compareMode);
    session.Load();
    const SValues values;
    const std::vector<std::function<void()>> steps = {
        [&] { session.Set("Count", values.count); }, [&] { session.Set("Flag", values.flag); },
        [&] { session.Set("Point", values.point); }, [&] { session.Set("Position", values.position); },
        [&] { session.Set("Probe", values.probe); }};
    for (const auto& step : steps)
    {
        step();
        if (boundaries)
            boundaries->push_back(bytes.size());
    }
    EXPECT_EQ(session.serializer->GetRecordCount(), 5u);
    EXPECT_TRUE(session.Logged("Write: Tool.Probe"));
    return bytes;
}

struct SFailure
{
    std::string kind;
    std::string function;
    std::string detail;
};

// Replays bytes with the values given, up to FinishReplay; what was thrown, or an empty kind.
SFailure replay(const std::vector<unsigned char>& bytes, const SValues& values, unsigned int compareMode,
                unsigned int replayState = CComponentSerializer::eReplayCompare,
                SToolSession* session = nullptr)
{
    SToolSession own;
    SToolSession& s = session ? *session : own;
    CbStreamReadBinary in(bytes);
    s.Serialize(in, compareMode, replayState);
    s.Load();
    try
    {
        play(s, values);
        s.serializer->FinishReplay();
    }
    catch (const CbException& e)
    {
        return {e.GetKind(), e.GetFunction(), e.GetDetail()};
    }
    return {};
}
} // namespace

TEST(CComponentSerializer, ReplayOfAnUnchangedSessionPassesAndLogsEachStep)
{
    const std::vector<unsigned char> bytes = record(CCompPortSerializerBase::eCompareImmediate);
    SToolSession session;
    EXPECT_EQ(replay(bytes, SValues(), CCompPortSerializerBase::eCompareImmediate, 0, &session).kind, "");
    EXPECT_EQ(session.serializer->GetRecordCount(), 5u);
    EXPECT_TRUE(session.Logged("Read for Compare: Tool.Count"));
    EXPECT_TRUE(session.Logged("Compare: Tool.Probe"));
    EXPECT_FALSE(session.Logged("Compare(NI): Tool.Probe"));
}

TEST(CComponentSerializer, ChangedValueThrowsNamingThePortAndTheInstantiation)
{
    const std::vector<unsigned char> bytes = record(CCompPortSerializerBase::eCompareImmediate);
    struct SCase
    {
        std::function<void(SValues&)> change;
        const char* function;
        const char* detail;
    };
    const SCase cases[] = {
        {[](SValues& v) { v.count = 4; }, "Tools::CCompPortSerializer<unsigned int>::onDataChanged",
         "port 'Tool.Count' is 4, the recording has 3"},
        {[](SValues& v) { v.flag = false; }, "Tools::CCompPortSerializer<bool>::onDataChanged",
         "port 'Tool.Flag' is false, the recording has true"},
        {[](SValues& v) { v.point.y = 2.5f; }, "Tools::CCompPortSerializer<class CbVector2f>::onDataChanged",
         "port 'Tool.Point'"},
        {[](SValues& v) { v.position.z = -3; }, "Tools::CCompPortSerializer<class CbVector3f>::onDataChanged",
         "port 'Tool.Position'"},
        {[](SValues& v) { v.probe.vec3.x = 9; },
         "Tools::CCompPortSerializer<struct Tools::STest>::onDataChanged", "port 'Tool.Probe'"},
    };
    for (const SCase& c : cases)
    {
        SValues values;
        c.change(values);
        const SFailure failure = replay(bytes, values, CCompPortSerializerBase::eCompareImmediate);
        EXPECT_EQ(failure.kind, "CbException");
        EXPECT_EQ(failure.function, c.function);
        EXPECT_NE(failure.detail.find(c.detail), std::string::npos) << failure.detail;
        // Replay state 1 reads the records and compares nothing.
        EXPECT_EQ(replay(bytes, values, CCompPortSerializerBase::eCompareImmediate,
                         CComponentSerializer::eReplayNoCompare)
                      .kind,
                  "");
        // Compare mode 0 neither.
        EXPECT_EQ(replay(bytes, values, CCompPortSerializerBase::eCompareNone).kind, "");
    }
}

TEST(CComponentSerializer, DeferredModeComparesWhenTheRecordIsRead)
{
    const std::vector<unsigned char> bytes = record(CCompPortSerializerBase::eCompareDeferred);
    SValues changed;
    changed.count = 4;
    SToolSession session;
    const SFailure failure = replay(bytes, changed, CCompPortSerializerBase::eCompareDeferred,
                                    CComponentSerializer::eReplayDeferred, &session);
    EXPECT_EQ(failure.function, "Tools::CCompPortSerializer<unsigned int>::Deserialize");
    EXPECT_NE(failure.detail.find("port 'Tool.Count' is 4, the recording has 3"), std::string::npos);
    EXPECT_TRUE(session.Logged("Compare(NI): Tool.Count"));
    EXPECT_FALSE(session.Logged("Compare: Tool.Count"));

    SToolSession unchanged;
    EXPECT_EQ(replay(bytes, SValues(), CCompPortSerializerBase::eCompareDeferred,
                     CComponentSerializer::eReplayDeferred, &unchanged)
                  .kind,
              "");
    EXPECT_TRUE(unchanged.Logged("Compare(NI): Tool.Probe"));
    // Outside replay state 2 deferred ports are not compared.
    SToolSession notDeferred;
    EXPECT_EQ(replay(bytes, changed, CCompPortSerializerBase::eCompareDeferred,
                     CComponentSerializer::eReplayCompare, &notDeferred)
                  .kind,
              "");
    EXPECT_FALSE(notDeferred.Logged("Compare(NI): Tool.Count"));
    EXPECT_TRUE(notDeferred.Logged("Read for Compare: Tool.Count"));
}

TEST(CComponentSerializer, TruncatedRecordingIsRefusedAtEveryLength)
{
    std::vector<std::size_t> boundaries{0};
    const std::vector<unsigned char> bytes = record(CCompPortSerializerBase::eCompareImmediate, &boundaries);
    ASSERT_EQ(boundaries.back(), bytes.size());
    for (std::size_t length = 0; length < bytes.size(); ++length)
    {
        // Copied, so that reading past the cut would leave the buffer (AddressSanitizer).
        const std::vector<unsigned char> cut(bytes.begin(), bytes.begin() + length);
        const SFailure failure = replay(cut, SValues(), CCompPortSerializerBase::eCompareImmediate);
        const bool atBoundary = std::find(boundaries.begin(), boundaries.end(), length) != boundaries.end();
        EXPECT_EQ(failure.kind, atBoundary ? "CbException" : "CbExceptionWrongFileVersion") << length;
        EXPECT_NE(
            failure.detail.find(atBoundary ? "after the end of the recording" : "the recording ends inside"),
            std::string::npos)
            << length << ": " << failure.detail;
    }
}

TEST(CComponentSerializer, RecordOfAnUnwatchedPortIsRefused)
{
    std::vector<unsigned char> bytes = record(CCompPortSerializerBase::eCompareImmediate);
    const std::string name = "Tool.Flag";
    const auto at = std::search(bytes.begin(), bytes.end(), name.begin(), name.end());
    ASSERT_NE(at, bytes.end());
    std::copy_n("Tool.Flux", name.size(), at);
    const SFailure failure = replay(bytes, SValues(), CCompPortSerializerBase::eCompareImmediate);
    EXPECT_EQ(failure.kind, "CbExceptionWrongFileVersion");
    EXPECT_EQ(failure.detail, "record 2 names port 'Tool.Flux', which is not watched");
}

TEST(CComponentSerializer, OtherChangesThanRecordedAreRefused)
{
    const std::vector<unsigned char> bytes = record(CCompPortSerializerBase::eCompareImmediate);
    const auto failureOf = [&bytes](const std::function<void(SToolSession&)>& session)
    {
        SToolSession s;
        CbStreamReadBinary in(bytes);
        s.Serialize(in, CCompPortSerializerBase::eCompareImmediate);
        s.Load();
        try
        {
            session(s);
            s.serializer->FinishReplay();
        }
        catch (const CbException& e)
        {
            return std::string(e.GetDetail());
        }
        return std::string();
    };
    EXPECT_EQ(failureOf([](SToolSession& s) { s.Set("Flag", true); }),
              "port 'Tool.Flag' changed where the recording has a change of port 'Tool.Count'");
    EXPECT_EQ(failureOf(
                  [](SToolSession& s)
                  {
                      s.framework.GetDispatcher()->NextInteraction();
                      s.Set("Count", 3u);
                  }),
              "port 'Tool.Count' changed in interaction 2, in the recording in interaction 1");
    const std::string fewer = failureOf(
        [](SToolSession& s)
        {
            s.Set("Count", 3u);
            s.Set("Flag", true);
        });
    EXPECT_EQ(fewer.rfind("the replay made 2 changes, the recording holds more", 0), 0u) << fewer;
    EXPECT_EQ(failureOf(
                  [](SToolSession& s)
                  {
                      play(s, SValues());
                      s.Set("Count", 3u);
                  }),
              "port 'Tool.Count' changed after the end of the recording (5 changes)");
}
} // namespace zqinteraction
