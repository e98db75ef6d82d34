#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/cbtypename.h"
#include "basepool/inoncopyable.h"
#include "zqinteraction/tools/cslot.h"
#include "zqinteraction/tools/itypeddata.h"
#include "zqinteraction/zqinteraction_export.h"

#include <string>
#include <typeinfo>
#include <vector>

namespace Tools
{
class CComponent;

// A typed connection point of a component. A port is bound to one data object of its value type;
// components are wired by binding an output port and the input ports it feeds to the same data
// (CConfiguration::Connect). When the data change, the dispatcher calls the port's slots.
class ZQINTERACTION_API CPort : private INonCopyable
{
public:
    enum EDirection
    {
        eIn,
        eOut,
    };

    CPort(CComponent& component, std::string name, EDirection direction, const std::type_info& valueType);
    ~CPort();

    const std::string& GetName() const { return m_name; }
    // "Component.Port", the name the port has in records and messages.
    std::string GetFullName() const;
    CComponent& GetComponent() const { return *m_component; }
    EDirection GetDirection() const { return m_direction; }
    const std::type_info& GetValueType() const { return *m_valueType; }

    // Binds the port to data (null unbinds). Throws CbExceptionPreconditionViolation for data of
    // another value type. Dispatcher thread, while no delivery runs.
    void Bind(CbSmartPointer<IData> data);
    IData* GetData() const { return m_data.Get(); }
    const CbSmartPointer<IData>& GetDataPointer() const { return m_data; }
    // The bound data as ITypedData<T>; throws CbExceptionPreconditionViolation when the port is
    // unbound or T is not its value type.
    template <class T> ITypedData<T>& GetTypedData() const
    {
        if (!m_data || typeid(T) != *m_valueType)
        {
            const std::string function = "Tools::CPort::GetTypedData<" + CbTypeName<T>::Get() + ">";
            CB_THROW(CbExceptionPreconditionViolation, function.c_str(),
                     "port '" + GetFullName() + (m_data ? "' carries another type" : "' is not bound"));
        }
        return static_cast<ITypedData<T>&>(*m_data);
    }

    void AddSlot(CSlot slot);
    // Removes every slot owned by owner.
    void RemoveSlots(const CComponent& owner);
    unsigned int GetSlotCount() const { return static_cast<unsigned int>(m_slots.size()); }

    // Calls every enabled slot for a change of the bound data, in the order they were added;
    // appends the operations they return to operations and returns how many handled the change.
    // Slots must not add or remove slots of this port while they run.
    unsigned int Deliver(const CSlot::SState& state, CScene& scene,
                         std::vector<CbSmartPointer<IOperation>>& operations);

private:
    CComponent* m_component;
    std::string m_name;
    EDirection m_direction;
    const std::type_info* m_valueType;
    CbSmartPointer<IData> m_data;
    std::vector<CSlot> m_slots;
};
} // namespace Tools
