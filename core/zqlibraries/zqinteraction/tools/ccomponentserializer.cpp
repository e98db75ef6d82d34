#include "zqinteraction/tools/ccomponentserializer.h"

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cbvector3.h"
#include "zqinteraction/tools/ccompportserializerbase.h"
#include "zqinteraction/tools/ceventdispatcher.h"
#include "zqinteraction/tools/cframework.h"
#include "zqinteraction/tools/cscene.h"

#include <algorithm>

namespace Tools
{
namespace
{
constexpr const char* kReadRecord = "Tools::CComponentSerializer::ReadRecord";

struct SApplicationState
{
    std::uint32_t interactionId = 0;
    CbVector3f eye;
    CbVector3f target;
};
} // namespace

CbSmartPointer<CComponentSerializer> CComponentSerializer::CreateSerializer(CFramework& framework,
                                                                            CbStreamWriteBinary& output)
{
    return CbSmartPointer<CComponentSerializer>(
        new CComponentSerializer(framework, &output, nullptr, eReplayCompare));
}

CbSmartPointer<CComponentSerializer> CComponentSerializer::CreateSerializer(CFramework& framework,
                                                                            CbStreamReadBinary& input,
                                                                            unsigned int replayState)
{
    return CbSmartPointer<CComponentSerializer>(
        new CComponentSerializer(framework, nullptr, &input, replayState));
}

CComponentSerializer::CComponentSerializer(CFramework& framework, CbStreamWriteBinary* output,
                                           CbStreamReadBinary* input, unsigned int replayState)
    : m_framework(framework), m_output(output), m_input(input), m_replayState(replayState)
{
}

CComponentSerializer::~CComponentSerializer() = default;

void CComponentSerializer::SerializeApplicationState(CScene& scene)
{
    if (!m_output)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CComponentSerializer::SerializeApplicationState",
                 "not recording");
    const CCamera& camera = scene.GetCamera();
    *m_output << static_cast<std::uint32_t>(m_framework.GetDispatcher()->GetCurrentInteractionId())
              << camera.GetEye() << camera.GetTarget();
}

void CComponentSerializer::ReadRecord(CCompPortSerializerBase& expected)
{
    if (!m_input)
        CB_THROW(CbExceptionPreconditionViolation, kReadRecord, "not replaying");
    const std::string& changed = expected.GetPortName();
    if (m_input->IsAtEnd())
        CB_THROW(CbException, kReadRecord,
                 "port '" + changed + "' changed after the end of the recording (" +
                     std::to_string(m_records) + " changes)");
    SApplicationState state;
    CStringA recordedName;
    try
    {
        *m_input >> state.interactionId >> state.eye >> state.target >> recordedName;
    }
    catch (const CbExceptionWrongFileVersion& e)
    {
        CB_THROW(CbExceptionWrongFileVersion, kReadRecord,
                 "the recording ends inside record " + std::to_string(m_records + 1) + ": " + e.GetDetail());
    }
    const std::string recorded = recordedName.GetString();
    if (!find(recorded))
        CB_THROW(CbExceptionWrongFileVersion, kReadRecord,
                 "record " + std::to_string(m_records + 1) + " names port '" + recorded +
                     "', which is not watched");
    if (recorded != changed)
        CB_THROW(CbException, kReadRecord,
                 "port '" + changed + "' changed where the recording has a change of port '" + recorded +
                     "'");
    const unsigned int interaction = m_framework.GetDispatcher()->GetCurrentInteractionId();
    if (state.interactionId != interaction)
        CB_THROW(CbException, kReadRecord,
                 "port '" + changed + "' changed in interaction " + std::to_string(interaction) +
                     ", in the recording in interaction " + std::to_string(state.interactionId));
    m_framework.GetScene().GetCamera().SetView(state.eye, state.target);
    try
    {
        expected.Deserialize();
    }
    catch (const CbExceptionWrongFileVersion& e)
    {
        CB_THROW(CbExceptionWrongFileVersion, kReadRecord,
                 "the recording ends inside the value of port '" + changed + "': " + e.GetDetail());
    }
    ++m_records;
}

void CComponentSerializer::FinishReplay()
{
    if (!m_input)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CComponentSerializer::FinishReplay",
                 "not replaying");
    if (!m_input->IsAtEnd())
        CB_THROW(CbException, "Tools::CComponentSerializer::FinishReplay",
                 "the replay made " + std::to_string(m_records) + " changes, the recording holds more (" +
                     std::to_string(m_input->GetRemaining()) + " bytes left)");
}

void CComponentSerializer::Log(const char* format, const std::string& portName) const
{
    m_framework.Log(CbFormat(format, portName.c_str()).GetString());
}

void CComponentSerializer::add(CCompPortSerializerBase& port)
{
    if (find(port.GetPortName()))
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CComponentSerializer::Watch",
                 "port '" + port.GetPortName() + "' is watched already");
    m_ports.push_back(&port);
}

void CComponentSerializer::remove(CCompPortSerializerBase& port)
{
    m_ports.erase(std::remove(m_ports.begin(), m_ports.end(), &port), m_ports.end());
}

CCompPortSerializerBase* CComponentSerializer::find(const std::string& portName) const
{
    for (CCompPortSerializerBase* port : m_ports)
        if (port->GetPortName() == portName)
            return port;
    return nullptr;
}
} // namespace Tools
