// The parts the tool framework's module test builds its scenes from: the value structure STest,
// the test's own operations, the component "TestComp" and a component that counts the changes its
// input ports hear of, with the assertion macro and small helpers of the subtests.

#pragma once

#include "basepool/cbexception.h"
#include "basepool/cbsmartpointer.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"
#include "basepool/cbvector2.h"
#include "basepool/cbvector3.h"
#include "zqbase/zqunittest.h"
#include "zqinteraction/tools/ccomponent.h"
#include "zqinteraction/tools/cdatalock.h"
#include "zqinteraction/tools/cdatasimple.h"
#include "zqinteraction/tools/cframework.h"
#include "zqinteraction/tools/coperationreplace.h"

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

// Fails the subtest with the system's assertion text unless actual == expected.
#define TOOLS_ASSERT_EQUAL(actual, expected)                                                                 \
    do                                                                                                       \
    {                                                                                                        \
        if (!((actual) == (expected)))                                                                       \
            return ZqFail(L"UnitTest Assertion: '%S' must be equal to '%S'.", #actual, #expected);           \
    } while (0)

namespace Tools
{
struct STest
{
    unsigned int uiValue = 0;
    bool bFlag = false;
    CbVector2f vec2;
    CbVector3f vec3;

    friend bool operator==(const STest& a, const STest& b)
    {
        return a.uiValue == b.uiValue && a.bFlag == b.bFlag && a.vec2 == b.vec2 && a.vec3 == b.vec3;
    }
    // Member by member, so that the padding is never written and a flag byte other than 0 or 1 is refused.
    friend CbStreamWriteBinary& operator<<(CbStreamWriteBinary& stream, const STest& value)
    {
        return stream << value.uiValue << value.bFlag << value.vec2 << value.vec3;
    }
    friend CbStreamReadBinary& operator>>(CbStreamReadBinary& stream, STest& value)
    {
        return stream >> value.uiValue >> value.bFlag >> value.vec2 >> value.vec3;
    }
};

// The value of data, read under its lock.
template <class T> T ReadValue(ITypedData<T>& data)
{
    ITypedDataAccess<T>& access = data.GetAccessInterface();
    CDataLock lock(access);
    if (!lock.Wait(data.GetLockingManager()))
        CB_THROW(CbException, "Tools::ReadValue");
    return access.Get();
}

// The function named by the CbException that call throws; "" when it throws none.
inline std::string ThrownFunction(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const CbException& e)
    {
        return e.GetFunction();
    }
    return "";
}

// Writes a value to data, once or with intermediate values (all in one lock). It cannot be
// undone, nor merged with another operation.
template <class T> class CTestOperationSet : public IOperation
{
public:
    CTestOperationSet(CbSmartPointer<ITypedData<T>> data, std::vector<T> writes)
        : m_data(std::move(data)), m_writes(std::move(writes))
    {
    }

    void operator()(CLockingManager& lockingManager) override
    {
        ITypedDataAccess<T>& access = m_data->GetAccessInterface();
        CDataLock lock(access);
        if (!lock.Wait(lockingManager))
            CB_THROW(CbException, "Tools::CTestOperationSet::operator ()");
        for (const T& value : m_writes)
            access.Set(value);
    }
    void Undo(CLockingManager&) override
    {
        throw std::logic_error("The method or operation is not implemented.");
    }
    void Accumulate(const IOperation&) override
    {
        throw std::logic_error("The method or operation is not implemented.");
    }

private:
    CbSmartPointer<ITypedData<T>> m_data;
    std::vector<T> m_writes;
};

// Adds to an unsigned value; the additions of one interaction merge into one undo step.
class CTestOperationAdd : public IOperation
{
public:
    CTestOperationAdd(CbSmartPointer<ITypedData<unsigned int>> data, unsigned int delta)
        : m_data(std::move(data)), m_delta(delta)
    {
    }

    void operator()(CLockingManager& lockingManager) override { add(lockingManager, m_delta); }
    void Undo(CLockingManager& lockingManager) override { add(lockingManager, 0u - m_delta); }
    bool CanAccumulate(const IOperation& next) const override
    {
        const auto* add = dynamic_cast<const CTestOperationAdd*>(&next);
        return add && add->m_data == m_data;
    }
    void Accumulate(const IOperation& next) override
    {
        m_delta += static_cast<const CTestOperationAdd&>(next).m_delta;
    }

private:
    void add(CLockingManager& lockingManager, unsigned int delta)
    {
        ITypedDataAccess<unsigned int>& access = m_data->GetAccessInterface();
        CDataLock lock(access);
        if (!lock.Wait(lockingManager))
            CB_THROW(CbException, "Tools::CTestOperationAdd::add");
        access.Set(access.Get() + delta);
    }

    CbSmartPointer<ITypedData<unsigned int>> m_data;
    unsigned int m_delta;
};

// "TestComp": ports "In" and "Out" (unsigned int). Out follows In: a change of In returns the
// operation that sets Out to twice In.
class CTestComponent : public CComponent
{
public:
    CTestComponent() : CComponent("TestComp")
    {
        AddPort<unsigned int>("In", CPort::eIn);
        AddPort<unsigned int>("Out", CPort::eOut);
    }

    CbSmartPointer<ITypedData<unsigned int>> GetIn() const { return typed("In"); }
    CbSmartPointer<ITypedData<unsigned int>> GetOut() const { return typed("Out"); }

protected:
    void setUp(CFramework& framework) override
    {
        GetPort("In")->Bind(CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "TestComp.In", 0u));
        GetPort("Out")->Bind(CbMakeSmart<CDataSimple<unsigned int, 0>>(framework, "TestComp.Out", 0u));
        GetPort("In")->AddSlot(CSlot(
            [this](const CSlot::SState& state, CScene&)
            {
                if (state.undoRedo)
                    return CSlot::NoOperation(CSlot::eEventIgnored);
                return CSlot::Operation(
                    CbMakeSmart<COperationReplace<unsigned int>>(GetOut(), 2 * ReadValue(*GetIn())));
            },
            this));
    }
    void tearDown() override { GetPort("In")->RemoveSlots(*this); }

private:
    CbSmartPointer<ITypedData<unsigned int>> typed(const char* port) const
    {
        return CbSmartPointer<ITypedData<unsigned int>>(&GetPort(port)->GetTypedData<unsigned int>());
    }
};

// A component with input ports of the given names (of type T) that counts the changes each hears
// of and remembers the interaction of the last one.
template <class T> class CCountingComponent : public CComponent
{
public:
    CCountingComponent(std::string name, const std::vector<std::string>& ports) : CComponent(std::move(name))
    {
        for (const std::string& port : ports)
            AddPort<T>(port, CPort::eIn);
    }

    unsigned int GetCount(const std::string& port) const
    {
        const auto it = m_counts.find(port);
        return it == m_counts.end() ? 0 : it->second;
    }
    unsigned int GetLastInteraction() const { return m_lastInteraction; }

protected:
    void setUp(CFramework&) override
    {
        for (const auto& port : GetPorts())
            port->AddSlot(CSlot(
                [this](const CSlot::SState& state, CScene&)
                {
                    ++m_counts[state.port->GetName()];
                    m_lastInteraction = state.interactionId;
                    return CSlot::NoOperation(CSlot::eEventHandled);
                },
                this));
    }
    void tearDown() override
    {
        for (const auto& port : GetPorts())
            port->RemoveSlots(*this);
    }

private:
    std::map<std::string, unsigned int> m_counts;
    unsigned int m_lastInteraction = 0;
};
} // namespace Tools

CB_DECLARE_TYPENAME(Tools::STest, "struct Tools::STest");
