#include "zqinteraction/tools/cconfiguration.h"

#include "basepool/cbexception.h"

#include <algorithm>
#include <functional>
#include <queue>

namespace Tools
{
namespace
{
constexpr unsigned int kNone = 0xFFFFFFFFu;
}

CConfiguration::CConfiguration() = default;

CConfiguration::~CConfiguration()
{
    Unload();
}

CConfiguration::HComponent CConfiguration::AddComponent(CbSmartPointer<CComponent> component)
{
    if (!component || m_loaded || indexOf(component->GetName()) != kNone)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CConfiguration::AddComponent",
                 !component ? std::string("no component")
                 : m_loaded ? "the configuration is loaded"
                            : "a component named '" + component->GetName() + "' exists already");
    m_components.push_back(std::move(component));
    return HComponent{static_cast<unsigned int>(m_components.size() - 1)};
}

void CConfiguration::Connect(const std::string& source, const std::string& sourcePort,
                             const std::string& target, const std::string& targetPort)
{
    CPort& from = GetPort(source, sourcePort);
    CPort& to = GetPort(target, targetPort);
    std::string problem;
    if (from.GetDirection() != CPort::eOut || to.GetDirection() != CPort::eIn)
        problem = "a connection goes from an output port to an input port";
    else if (from.GetValueType() != to.GetValueType())
        problem = "the ports carry different types";
    else if (std::any_of(m_connections.begin(), m_connections.end(),
                         [&to](const SConnection& connection) { return connection.target == &to; }))
        problem = "the input port is fed already";
    if (!problem.empty())
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CConfiguration::Connect",
                 from.GetFullName() + " -> " + to.GetFullName() + ": " + problem);
    m_connections.push_back({&from, &to, indexOf(source), indexOf(target)});
}

CComponent* CConfiguration::GetComponentByRef(HComponent handle) const
{
    if (handle.index >= m_components.size())
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CConfiguration::GetComponentByRef",
                 "unknown component handle " + std::to_string(handle.index));
    return m_components[handle.index].Get();
}

CComponent* CConfiguration::GetComponent(const std::string& name) const
{
    const unsigned int index = indexOf(name);
    return index == kNone ? nullptr : m_components[index].Get();
}

CPort& CConfiguration::GetPort(const std::string& component, const std::string& port) const
{
    CComponent* owner = GetComponent(component);
    CPort* found = owner ? owner->GetPort(port) : nullptr;
    if (!found)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CConfiguration::GetPort",
                 owner ? "component '" + component + "' has no port '" + port + "'"
                       : "no component '" + component + "'");
    return *found;
}

unsigned int CConfiguration::indexOf(const std::string& name) const
{
    for (unsigned int i = 0; i < m_components.size(); ++i)
        if (m_components[i]->GetName() == name)
            return i;
    return kNone;
}

// Kahn's algorithm with the ready components ordered by name, so that the order depends on the
// wiring and the names alone.
std::vector<unsigned int> CConfiguration::computeSetupOrder() const
{
    const std::size_t n = m_components.size();
    std::vector<std::vector<unsigned int>> successors(n);
    std::vector<unsigned int> pending(n, 0);
    const auto addEdge = [&](unsigned int before, unsigned int after)
    {
        successors[before].push_back(after);
        ++pending[after];
    };
    for (const SConnection& connection : m_connections)
        addEdge(connection.sourceComponent, connection.targetComponent);
    for (unsigned int i = 0; i < n; ++i)
        for (const std::string& dependency : m_components[i]->GetDependencies())
        {
            const unsigned int before = indexOf(dependency);
            if (before == kNone)
                CB_THROW(CbExceptionPreconditionViolation, "Tools::CConfiguration::LoadConfigForUnitTest",
                         "component '" + m_components[i]->GetName() + "' depends on the unknown component '" +
                             dependency + "'");
            addEdge(before, i);
        }

    const auto byName = [this](unsigned int a, unsigned int b)
    { return m_components[a]->GetName() > m_components[b]->GetName(); };
    std::priority_queue<unsigned int, std::vector<unsigned int>, decltype(byName)> ready(byName);
    for (unsigned int i = 0; i < n; ++i)
        if (pending[i] == 0)
            ready.push(i);
    std::vector<unsigned int> order;
    while (!ready.empty())
    {
        const unsigned int next = ready.top();
        ready.pop();
        order.push_back(next);
        for (unsigned int after : successors[next])
            if (--pending[after] == 0)
                ready.push(after);
    }
    if (order.size() < n)
    {
        std::string names;
        for (unsigned int i = 0; i < n; ++i)
            if (pending[i] != 0)
                names += (names.empty() ? "'" : ", '") + m_components[i]->GetName() + "'";
        CB_THROW(CbException, "Tools::CConfiguration::LoadConfigForUnitTest",
                 "the components " + names + " depend on each other in a cycle");
    }
    return order;
}

void CConfiguration::LoadConfigForUnitTest(CFramework& framework)
{
    if (m_loaded)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CConfiguration::LoadConfigForUnitTest",
                 "the configuration is loaded already");
    const std::vector<unsigned int> order = computeSetupOrder();
    try
    {
        for (unsigned int index : order)
            setUpComponent(index, framework);
    }
    catch (...)
    {
        m_loaded = true;
        Unload();
        throw;
    }
    m_loaded = true;
}

void CConfiguration::setUpComponent(unsigned int index, CFramework& framework)
{
    CComponent& component = *m_components[index];
    for (const SConnection& connection : m_connections)
        if (connection.targetComponent == index)
            connection.target->Bind(connection.source->GetDataPointer());
    component.SetUp(framework);
    m_setUp.push_back(index);
    for (const auto& port : component.GetPorts())
        if (port->GetDirection() == CPort::eOut && !port->GetData())
            CB_THROW(CbExceptionPreconditionViolation, "Tools::CConfiguration::LoadConfigForUnitTest",
                     "output port '" + port->GetFullName() + "' has no data after its component was set up");
    component.SetActive(true);
}

void CConfiguration::Unload()
{
    if (!m_loaded)
        return;
    for (auto it = m_setUp.rbegin(); it != m_setUp.rend(); ++it)
    {
        m_components[*it]->SetActive(false);
        m_components[*it]->TearDown();
    }
    m_setUp.clear();
    m_loaded = false;
}

std::vector<std::string> CConfiguration::GetSetupOrder() const
{
    std::vector<std::string> names;
    for (unsigned int index : m_setUp)
        names.push_back(m_components[index]->GetName());
    return names;
}
} // namespace Tools
