#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cbtypename.h"
#include "zqinteraction/tools/ccomponentserializer.h"
#include "zqinteraction/tools/ccompportserializerbase.h"
#include "zqinteraction/tools/cconfiguration.h"
#include "zqinteraction/tools/cdatalock.h"
#include "zqinteraction/tools/cvaluetext.h"

#include <string>
#include <typeinfo>

namespace Tools
{
// Records the changes of one port carrying a T, or checks them in a replay (see
// CComponentSerializer for the stream and the order of reading). T is written and read with the
// binary streams' operator<< and operator>> and compared with operator==.
//
// Reading and writing the port's value follow the locking discipline: request the lock from the
// data's locking manager, wait without limit on the component's, unlock at the end. A wait that
// fails, or a replayed value that differs from the recorded one, throws CbException naming the
// function of this instantiation, e.g. "Tools::CCompPortSerializer<unsigned int>::onDataChanged",
// with the port and both values in its detail.
template <class T> class CCompPortSerializer : public CCompPortSerializerBase
{
public:
    CCompPortSerializer(CComponentSerializer& serializer, CPort& port, unsigned int compareMode)
        : CCompPortSerializerBase(serializer, port, compareMode)
    {
        if (port.GetValueType() != typeid(T))
            CB_THROW(CbExceptionPreconditionViolation, functionText("CCompPortSerializer").c_str(),
                     "port '" + port.GetFullName() + "' carries another type");
    }

    // Step of a replay: the value of the port's next change as recorded. A comparison deferred by
    // onDataChanged is made now, with the port's current value.
    void Deserialize() override
    {
        CComponentSerializer& serializer = GetSerializer();
        if (!serializer.GetInputStream())
            CB_THROW(CbExceptionPreconditionViolation, functionText("Deserialize").c_str(), "not replaying");
        if (GetCompareMode() != eCompareNone)
            serializer.Log("Read for Compare: %s", GetPortName());
        T recorded{};
        *serializer.GetInputStream() >> recorded;
        m_lastRead = recorded;
        if (!m_comparePending)
            return;
        serializer.Log("Compare(NI): %s", GetPortName());
        ITypedDataAccess<T>& access = GetPort().template GetTypedData<T>().GetAccessInterface();
        CDataLock lock(access);
        if (!lock.Wait(GetLockingManager(), CLockingManager::kWaitWithoutLimit))
            CB_THROW(CbException, functionText("Deserialize").c_str());
        if (access.Get() == m_lastRead)
        {
            m_comparePending = false;
            return;
        }
        CB_THROW(CbException, functionText("Deserialize").c_str(), differenceText(access.Get()));
    }

    bool IsComparePending() const { return m_comparePending; }
    // The value read last from the replayed stream.
    const T& GetLastRead() const { return m_lastRead; }

protected:
    CSlot::SResult onDataChanged(const CSlot::SState&, CScene& scene) override
    {
        ITypedDataAccess<T>& access = GetPort().template GetTypedData<T>().GetAccessInterface();
        CDataLock lock(access);
        if (!lock.Wait(GetLockingManager(), CLockingManager::kWaitWithoutLimit))
            CB_THROW(CbException, functionText("onDataChanged").c_str());
        CComponentSerializer& serializer = GetSerializer();
        if (CbStreamWriteBinary* output = serializer.GetOutputStream())
        {
            serializer.Log("Write: %s", GetPortName());
            serializer.SerializeApplicationState(scene);
            *output << CStringA(GetPortName()) << access.Get();
            serializer.countWritten();
        }
        else
        {
            const unsigned int mode = GetCompareMode();
            if ((mode & ~static_cast<unsigned int>(eCompareDeferred)) != 0)
            {
                serializer.Log("Compare: %s", GetPortName());
                if (serializer.GetReplayState() != CComponentSerializer::eReplayNoCompare &&
                    !(access.Get() == m_lastRead))
                    CB_THROW(CbException, functionText("onDataChanged").c_str(),
                             differenceText(access.Get()));
            }
            if (mode == eCompareDeferred &&
                serializer.GetReplayState() == CComponentSerializer::eReplayDeferred)
                m_comparePending = true;
        }
        return CSlot::NoOperation(CSlot::eEventHandled);
    }

private:
    static std::string functionText(const char* function)
    {
        return "Tools::CCompPortSerializer<" + CbTypeName<T>::Get() + ">::" + function;
    }

    std::string differenceText(const T& current) const
    {
        return "port '" + GetPortName() + "' is " + ValueText(current) + ", the recording has " +
               ValueText(m_lastRead);
    }

    T m_lastRead{};
    bool m_comparePending = false;
};

template <class T>
CbSmartPointer<CCompPortSerializer<T>>
CComponentSerializer::Watch(CConfiguration& configuration, const std::string& component,
                            const std::string& port, unsigned int compareMode)
{
    auto serializer =
        CbMakeSmart<CCompPortSerializer<T>>(*this, configuration.GetPort(component, port), compareMode);
    configuration.AddComponent(serializer);
    return serializer;
}
} // namespace Tools
