#include "zqinteraction/tools/ccomponent.h"

#include "basepool/cbexception.h"
#include "zqinteraction/tools/cframework.h"

namespace Tools
{
CComponent::CComponent(std::string name) : m_name(std::move(name))
{
    if (m_name.empty())
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CComponent::CComponent",
                 "a component needs a name");
}

CComponent::~CComponent() = default;

CPort* CComponent::GetPort(const std::string& name) const
{
    for (const auto& port : m_ports)
        if (port->GetName() == name)
            return port.get();
    return nullptr;
}

std::vector<std::string> CComponent::GetDependencies() const
{
    return {};
}

void CComponent::SetUp(CFramework& framework)
{
    m_framework = &framework;
    setUp(framework);
}

void CComponent::TearDown()
{
    tearDown();
    m_framework = nullptr;
}

CFramework& CComponent::GetFramework() const
{
    if (!m_framework)
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CComponent::GetFramework",
                 "component '" + m_name + "' is not set up");
    return *m_framework;
}

CLockingManager& CComponent::GetLockingManager() const
{
    return GetFramework().GetLockingManager();
}

void CComponent::setUp(CFramework&) {}

void CComponent::tearDown() {}

CPort& CComponent::addPort(std::unique_ptr<CPort> port)
{
    if (GetPort(port->GetName()))
        CB_THROW(CbExceptionPreconditionViolation, "Tools::CComponent::AddPort",
                 "component '" + m_name + "' has a port '" + port->GetName() + "' already");
    m_ports.push_back(std::move(port));
    return *m_ports.back();
}
} // namespace Tools
