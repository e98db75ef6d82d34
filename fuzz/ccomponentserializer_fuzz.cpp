// Replays a tool session against a recording made of arbitrary bytes. The first byte picks the
// compare mode and the replay state; the rest is the recording. A replay of bytes it cannot match
// must end in a CbException (kind and port named by the serializer), never read past the recording
// (the input is exactly as long as the bytes libFuzzer hands over) and never leave a lock held: every
// value must still be readable afterwards.
//
// With ZQ_FUZZ_WRITE_SEEDS=DIR set, the target writes its seeds into DIR and exits: recordings of the
// session it replays, in each compare mode, and one cut in half.

#include "zqinteraction/toolsession.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace zqinteraction;

namespace
{
void play(SToolSession& session)
{
    session.Set("Count", 3u);
    session.Set("Flag", true);
    session.Set("Point", CbVector2f(1, 2));
    session.Set("Position", CbVector3f(1, 2, 3));
    session.Set("Probe", MakeProbe(4));
    session.serializer->FinishReplay();
}

std::vector<unsigned char> record(unsigned int compareMode)
{
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary out(bytes);
    SToolSession session;
    session.Serialize(out, compareMode);
    session.Load();
    session.Set("Count", 3u);
    session.Set("Flag", true);
    session.Set("Point", CbVector2f(1, 2));
    session.Set("Position", CbVector3f(1, 2, 3));
    session.Set("Probe", MakeProbe(4));
    return bytes;
}

// The first byte selects compare mode (byte % 3) and replay state (byte / 3 % 3).
void writeSeed(const std::string& path, unsigned char selector, const std::vector<unsigned char>& recording)
{
    std::vector<unsigned char> bytes{selector};
    bytes.insert(bytes.end(), recording.begin(), recording.end());
    CbStreamWriteBinary file(path);
    file.Write(bytes.data(), bytes.size());
    file.Close();
}

void writeSeeds(const std::string& directory)
{
    writeSeed(directory + "/immediate-compare", 1, record(CCompPortSerializerBase::eCompareImmediate));
    writeSeed(directory + "/deferred-replay-deferred", 2 + 3 * 2,
              record(CCompPortSerializerBase::eCompareDeferred));
    writeSeed(directory + "/none-no-compare", 0 + 3 * 1, record(CCompPortSerializerBase::eCompareNone));
    std::vector<unsigned char> cut = record(CCompPortSerializerBase::eCompareImmediate);
    cut.resize(cut.size() / 2);
    writeSeed(directory + "/immediate-truncated", 1, cut);
}

// Every port can be locked and read again, and no operation is still running.
void checkUnlocked(SToolSession& session)
{
    (void)ReadValue(*session.Data<unsigned int>("Count"));
    (void)ReadValue(*session.Data<bool>("Flag"));
    (void)ReadValue(*session.Data<CbVector2f>("Point"));
    (void)ReadValue(*session.Data<CbVector3f>("Position"));
    (void)ReadValue(*session.Data<STest>("Probe"));
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    if (const char* directory = std::getenv("ZQ_FUZZ_WRITE_SEEDS"))
    {
        writeSeeds(directory);
        std::exit(0);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    static const unsigned int compareModes[] = {CCompPortSerializerBase::eCompareNone,
                                                CCompPortSerializerBase::eCompareImmediate,
                                                CCompPortSerializerBase::eCompareDeferred};
    const unsigned int compareMode = compareModes[data[0] % 3];
    const unsigned int replayState = (data[0] / 3) % 3;
    // A copy of exactly the recording's length, so that a read past its end leaves the allocation.
    const std::vector<unsigned char> recording(data + 1, data + size);
    SToolSession session;
    CbStreamReadBinary stream(recording);
    session.Serialize(stream, compareMode, replayState);
    session.Load();
    try
    {
        play(session);
    }
    catch (const CbException& e)
    {
        if (!*e.GetDetail() && !*e.GetFunction())
        {
            std::fprintf(stderr, "a refused replay names neither a reason nor a function\n");
            std::abort();
        }
    }
    checkUnlocked(session);
    return 0;
}
