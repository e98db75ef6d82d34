#include "zqinteraction/tools/idata.h"

#include "zqinteraction/tools/ceventdispatcher.h"
#include "zqinteraction/tools/cframework.h"
#include "zqinteraction/tools/idataaccessinterface.h"

#include <algorithm>

namespace Tools
{
IDataAccessInterface::~IDataAccessInterface() = default;

CSceneObject* IDataAccessInterface::GetSceneObject() const
{
    return GetData().GetSceneObject();
}

IData::IData(CFramework& framework, std::string name) : m_framework(&framework), m_name(std::move(name))
{
    framework.dataCreated();
}

IData::~IData()
{
    m_framework->dataDestroyed();
}

void IData::MarkChanged()
{
    if (m_changePending.exchange(true, std::memory_order_acq_rel))
        return;
    try
    {
        m_framework->GetDispatcher()->OnDataChanged(*this);
    }
    catch (...)
    {
        m_changePending.store(false, std::memory_order_release);
        throw;
    }
}

void IData::AddObserver(CPort& port)
{
    m_observers.push_back(&port);
}

void IData::RemoveObserver(CPort& port)
{
    m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), &port), m_observers.end());
}

void IData::AddDependent(IData& dependent)
{
    m_dependents.push_back(&dependent);
}

void IData::RemoveDependent(IData& dependent)
{
    m_dependents.erase(std::remove(m_dependents.begin(), m_dependents.end(), &dependent), m_dependents.end());
}

void IData::CollectAffected(std::vector<IData*>& affected)
{
    affected.push_back(this);
    affected.insert(affected.end(), m_dependents.begin(), m_dependents.end());
}
} // namespace Tools
