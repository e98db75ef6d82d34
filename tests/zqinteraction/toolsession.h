// A tool session for the tool framework's tests: a framework, and a configuration with the
// component "Tool" whose output ports carry one value of each type the framework is used with,
// optionally recorded or replayed by a component serializer.

#pragma once

#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "zqinteraction/tools/ccompportserializer.h"
#include "zqinteraction/tools/cconfiguration.h"
#include "zqinteraction/tools/cdatasimple.h"
#include "zqinteraction/tools/ceventdispatcher.h"
#include "zqinteraction/tools/coperationreplace.h"
#include "zqinteraction/tools/cundoredomanager.h"
#include "zqunittests/tools/ctoolframeworktestparts.h"

#include <string>
#include <vector>

namespace zqinteraction
{
using namespace Tools;

// Output ports "Count", "Flag", "Point", "Position" and "Probe".
class CToolComponent : public CComponent
{
public:
    CToolComponent() : CComponent("Tool")
    {
        AddPort<unsigned int>("Count", CPort::eOut);
        AddPort<bool>("Flag", CPort::eOut);
        AddPort<CbVector2f>("Point", CPort::eOut);
        AddPort<CbVector3f>("Position", CPort::eOut);
        AddPort<STest>("Probe", CPort::eOut);
    }

protected:
    void setUp(CFramework& framework) override
    {
        bind<unsigned int>(framework, "Count");
        bind<bool>(framework, "Flag");
        bind<CbVector2f>(framework, "Point");
        bind<CbVector3f>(framework, "Position");
        bind<STest>(framework, "Probe");
    }

private:
    template <class T> void bind(CFramework& framework, const std::string& port)
    {
        GetPort(port)->Bind(CbMakeSmart<CDataSimple<T, 0>>(framework, "Tool." + port));
    }
};

struct SToolSession
{
    CFramework framework;
    CConfiguration config;
    CbSmartPointer<CToolComponent> tool = CbMakeSmart<CToolComponent>();
    CbSmartPointer<CComponentSerializer> serializer;
    std::vector<std::string> log;

    SToolSession()
    {
        config.AddComponent(tool);
        framework.SetLogSink([this](const std::string& line) { log.push_back(line); });
    }

    // Watches every port of "Tool" with compareMode.
    template <class Stream>
    void Serialize(Stream& stream, unsigned int compareMode, unsigned int replayState = 0)
    {
        if constexpr (std::is_same_v<Stream, CbStreamReadBinary>)
            serializer = CComponentSerializer::CreateSerializer(framework, stream, replayState);
        else
            serializer = CComponentSerializer::CreateSerializer(framework, stream);
        serializer->Watch<unsigned int>(config, "Tool", "Count", compareMode);
        serializer->Watch<bool>(config, "Tool", "Flag", compareMode);
        serializer->Watch<CbVector2f>(config, "Tool", "Point", compareMode);
        serializer->Watch<CbVector3f>(config, "Tool", "Position", compareMode);
        serializer->Watch<STest>(config, "Tool", "Probe", compareMode);
    }

    void Load() { config.LoadConfigForUnitTest(framework); }

    template <class T> CbSmartPointer<ITypedData<T>> Data(const std::string& port)
    {
        return CbSmartPointer<ITypedData<T>>(&config.GetPort("Tool", port).GetTypedData<T>());
    }

    // Replaces the value of a port, in an interaction of its own.
    template <class T> void Set(const std::string& port, T value)
    {
        framework.GetDispatcher()->NextInteraction();
        framework.GetDispatcher()->Execute(
            CbMakeSmart<COperationReplace<T>>(Data<T>(port), std::move(value)));
    }

    bool Logged(const std::string& line) const
    {
        return std::find(log.begin(), log.end(), line) != log.end();
    }
};

// A probe value that differs for each seed.
inline STest MakeProbe(unsigned int seed)
{
    STest probe;
    probe.uiValue = seed;
    probe.bFlag = seed % 2 == 1;
    probe.vec2 = CbVector2f(0.5f * seed, -1);
    probe.vec3 = CbVector3f(1, 2, static_cast<float>(seed));
    return probe;
}
} // namespace zqinteraction
