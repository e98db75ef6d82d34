// Wiring and loading a configuration: wrong connections are refused naming the ports, a failed
// load tears down what it set up, and a port serializer follows the component it watches.

#include "toolsession.h"

#include <gtest/gtest.h>

namespace zqinteraction
{
namespace
{
// Logs its set-up and tear-down; leaves its output port unbound when told to.
class CLoggingComponent : public CComponent
{
public:
    CLoggingComponent(std::string name, std::vector<std::string>& log, bool bindOutput)
        : CComponent(std::move(name)), m_log(log), m_bindOutput(bindOutput)
    {
        AddPort<unsigned int>("In", CPort::eIn);
        AddPort<unsigned int>("Out", CPort::eOut);
        AddPort<bool>("Flag", CPort::eIn);
    }

protected:
    void setUp(CFramework& framework) override
    {
        m_log.push_back("set up " + GetName());
        if (m_bindOutput)
            GetPort("Out")->Bind(
                CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, GetName() + ".Out", 0u));
    }
    void tearDown() override { m_log.push_back("tear down " + GetName()); }

private:
    std::vector<std::string>& m_log;
    bool m_bindOutput;
};

std::string connectError(CConfiguration& config, const char* source, const char* sourcePort,
                         const char* target, const char* targetPort)
{
    try
    {
        config.Connect(source, sourcePort, target, targetPort);
    }
    catch (const CbExceptionPreconditionViolation& e)
    {
        return e.GetDetail();
    }
    return "";
}
} // namespace

TEST(CConfiguration, WrongConnectionsAreRefusedNamingThePorts)
{
    std::vector<std::string> log;
    CConfiguration config;
    config.AddComponent(CbMakeSmart<CLoggingComponent>("A", log, true));
    config.AddComponent(CbMakeSmart<CLoggingComponent>("B", log, true));
    EXPECT_THROW(config.AddComponent(CbMakeSmart<CLoggingComponent>("A", log, true)),
                 CbExceptionPreconditionViolation);
    EXPECT_EQ(connectError(config, "A", "Out", "C", "In"), "no component 'C'");
    EXPECT_EQ(connectError(config, "A", "Pout", "B", "In"), "component 'A' has no port 'Pout'");
    EXPECT_EQ(connectError(config, "A", "In", "B", "Out"),
              "A.In -> B.Out: a connection goes from an output port to an input port");
    EXPECT_EQ(connectError(config, "A", "Out", "B", "Flag"),
              "A.Out -> B.Flag: the ports carry different types");
    EXPECT_EQ(connectError(config, "A", "Out", "B", "In"), "");
    EXPECT_EQ(connectError(config, "B", "Out", "B", "In"), "B.Out -> B.In: the input port is fed already");
}

TEST(CConfiguration, FailedLoadTearsDownWhatItSetUp)
{
    std::vector<std::string> log;
    CFramework framework;
    CConfiguration config;
    auto a = CbMakeSmart<CLoggingComponent>("A", log, true);
    config.AddComponent(a);
    config.AddComponent(CbMakeSmart<CLoggingComponent>("B", log, false));
    config.Connect("A", "Out", "B", "In");
    try
    {
        config.LoadConfigForUnitTest(framework);
        FAIL() << "no exception";
    }
    catch (const CbExceptionPreconditionViolation& e)
    {
        EXPECT_STREQ(e.GetDetail(), "output port 'B.Out' has no data after its component was set up");
    }
    EXPECT_EQ(log, (std::vector<std::string>{"set up A", "set up B", "tear down B", "tear down A"}));
    EXPECT_FALSE(a->IsActive());
    EXPECT_FALSE(config.IsLoaded());
}

TEST(CConfiguration, PortSerializerIsSetUpAfterTheComponentItWatches)
{
    std::vector<std::string> log;
    std::vector<unsigned char> bytes;
    CbStreamWriteBinary out(bytes);
    CFramework framework;
    CConfiguration config;
    config.AddComponent(CbMakeSmart<CLoggingComponent>("Zeta", log, true));
    auto serializer = CComponentSerializer::CreateSerializer(framework, out);
    serializer->Watch<unsigned int>(config, "Zeta", "Out", CCompPortSerializerBase::eCompareImmediate);
    EXPECT_THROW(serializer->Watch<unsigned int>(config, "Zeta", "Out", 1), CbExceptionPreconditionViolation);
    EXPECT_THROW(serializer->Watch<bool>(config, "Zeta", "In", 1), CbExceptionPreconditionViolation);
    config.LoadConfigForUnitTest(framework);
    EXPECT_EQ(config.GetSetupOrder(), (std::vector<std::string>{"Zeta", "Serializer:Zeta.Out"}));
    EXPECT_EQ(config.GetPort("Zeta", "Out").GetSlotCount(), 1u);
    config.Unload();
    EXPECT_EQ(config.GetPort("Zeta", "Out").GetSlotCount(), 0u);
}
} // namespace zqinteraction
