#pragma once

#include "basepool/cbrefcounted.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/zqinteraction_export.h"

#include <cstdint>
#include <string>
#include <vector>

class CbStreamReadBinary;
class CbStreamWriteBinary;

namespace Tools
{
class CCompPortSerializerBase;
template <class T> class CCompPortSerializer;
class CConfiguration;
class CFramework;
class CScene;

// Records the changes of watched ports during a session, or replays a recorded session and checks
// that the ports change the same way, to catch a change of behaviour.
//
// The recording holds one record per change, in the order the changes were delivered: the
// application state (interaction id as uint32, camera eye and target as 3 floats each), the port's
// full name ("Component.Port", UTF-8 with a uint32 length) and the port's value.
//
// In a replay the records are read as the changes come: a port compared at once (compare mode
// with a bit other than 2, and mode 0) reads its record before the change is compared; a port
// compared deferred (mode 2) reads it after its serializer has seen the change, and compares then
// when the replay state is 2. A record must be the change the replay makes: same port, same
// interaction; the camera is set to the recorded one. Anything else is refused with CbException
// naming the port; a recording that ends inside a record, or names a port that is not watched,
// with CbExceptionWrongFileVersion. Nothing is read past the recording's end.
//
//     std::vector<unsigned char> bytes;
//     CbStreamWriteBinary out(bytes);
//     auto recorder = CComponentSerializer::CreateSerializer(framework, out);
//     recorder->Watch<unsigned int>(config, "TestComp", "Out", CCompPortSerializerBase::eCompareImmediate);
//     ... load, run the session ...
//     CbStreamReadBinary in(bytes);
//     auto player = CComponentSerializer::CreateSerializer(otherFramework, in);
//     ... watch the same ports, load, run the session again ...
//     player->FinishReplay();            // throws when changes of the recording did not happen
class ZQINTERACTION_API CComponentSerializer : public virtual CbRefCounted, private INonCopyable
{
public:
    enum EReplayState : unsigned int
    {
        // Compare the ports compared at once.
        eReplayCompare = 0,
        // Read the records, compare nothing.
        eReplayNoCompare = 1,
        // Also compare the deferred ports (compare mode 2), when their record is read.
        eReplayDeferred = 2,
    };

    // A recorder writing to output, which must outlive it.
    static CbSmartPointer<CComponentSerializer> CreateSerializer(CFramework& framework,
                                                                 CbStreamWriteBinary& output);
    // A player reading input, which must outlive it.
    static CbSmartPointer<CComponentSerializer> CreateSerializer(CFramework& framework,
                                                                 CbStreamReadBinary& input,
                                                                 unsigned int replayState = eReplayCompare);
    ~CComponentSerializer() override;

    // Adds a port serializer for component.port (of value type T) to configuration, before it is
    // loaded. Defined in ccompportserializer.h.
    template <class T>
    CbSmartPointer<CCompPortSerializer<T>> Watch(CConfiguration& configuration, const std::string& component,
                                                 const std::string& port, unsigned int compareMode);

    CFramework& GetFramework() const { return m_framework; }
    // The recording's stream; null in a replay.
    CbStreamWriteBinary* GetOutputStream() const { return m_output; }
    // The replayed stream; null when recording.
    CbStreamReadBinary* GetInputStream() const { return m_input; }
    unsigned int GetReplayState() const { return m_replayState; }
    void SetReplayState(unsigned int replayState) { m_replayState = replayState; }
    // Records written or read so far.
    unsigned int GetRecordCount() const { return m_records; }

    // Writes the application state that opens each record: the current interaction and the camera.
    void SerializeApplicationState(CScene& scene);
    // Replay: reads the next record, which must be a change of expected's port in the current
    // interaction, and lets expected read the value (Deserialize).
    void ReadRecord(CCompPortSerializerBase& expected);
    // End of a replay: throws CbException when the recording holds changes that did not happen.
    void FinishReplay();

    // Logs format (with one %s) filled with portName, through the framework's log.
    void Log(const char* format, const std::string& portName) const;

private:
    friend class CCompPortSerializerBase;
    template <class T> friend class CCompPortSerializer;

    CComponentSerializer(CFramework& framework, CbStreamWriteBinary* output, CbStreamReadBinary* input,
                         unsigned int replayState);
    void add(CCompPortSerializerBase& port);
    void remove(CCompPortSerializerBase& port);
    CCompPortSerializerBase* find(const std::string& portName) const;
    void countWritten() { ++m_records; }

    CFramework& m_framework;
    CbStreamWriteBinary* m_output;
    CbStreamReadBinary* m_input;
    unsigned int m_replayState;
    unsigned int m_records = 0;
    std::vector<CCompPortSerializerBase*> m_ports;
};
} // namespace Tools
