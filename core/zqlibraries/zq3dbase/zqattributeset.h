#pragma once

#include "basepool/cbarray.h"
#include "basepool/cbexception.h"
#include "basepool/cbsmartpointer.h"
#include "zq3dbase/zqattributeparameter.h"

#include <cstddef>
#include <string>
#include <tuple>
#include <utility>

// One attribute of a triangulation: a value per element in one contiguous array, present or not,
// with its serialize switch and its optional parameter object. The switch and the parameter belong
// to the slot and survive removing and asserting the attribute again.
template <class T> struct ZqAttributeColumn
{
    using ValueType = T;

    CbArray<T> values;
    bool present = false;
    bool serialize = false;
    CbSmartPointer<ZqAttributeParameter> parameter;
};

// The attributes of one element kind (vertices or triangles), one column per enumerator of TEnum in
// the order of Ts. Present columns always hold exactly as many values as there are elements.
template <class TEnum, class... Ts> class ZqAttributeSet
{
public:
    static constexpr unsigned int kCount = sizeof...(Ts);

    template <TEnum A> auto& Column() { return std::get<static_cast<std::size_t>(A)>(m_columns); }
    template <TEnum A> const auto& Column() const { return std::get<static_cast<std::size_t>(A)>(m_columns); }

    // Calls function(column) for the column of a runtime attribute; an attribute not below kCount
    // throws CbExceptionPreconditionViolation.
    template <class F> decltype(auto) Visit(TEnum attribute, F&& function)
    {
        return visit<0>(m_columns, checked(attribute), function);
    }
    template <class F> decltype(auto) Visit(TEnum attribute, F&& function) const
    {
        return visit<0>(m_columns, checked(attribute), function);
    }
    // Calls function(attribute, column) for every column.
    template <class F> void ForEach(F&& function)
    {
        forEach(m_columns, function, std::index_sequence_for<Ts...>());
    }
    template <class F> void ForEach(F&& function) const
    {
        forEach(m_columns, function, std::index_sequence_for<Ts...>());
    }

    // Calls function(attribute, column, otherColumn) for every column of this set and the same
    // column of other.
    template <class F> void ForEachPair(const ZqAttributeSet& other, F&& function) const
    {
        forEachPair(m_columns, other.m_columns, function, std::index_sequence_for<Ts...>());
    }

    // Makes the attribute present with value-initialised values for count elements.
    void Assert(TEnum attribute, unsigned int count)
    {
        Visit(attribute,
              [count](auto& column)
              {
                  if (column.present)
                      return;
                  column.values.SetCount(count);
                  column.present = true;
              });
    }
    void Remove(TEnum attribute)
    {
        Visit(attribute,
              [](auto& column)
              {
                  column.values.RemoveAll();
                  column.present = false;
              });
    }
    bool IsPresent(TEnum attribute) const
    {
        return Visit(attribute, [](const auto& column) { return column.present; });
    }
    bool IsAnyPresent() const
    {
        bool any = false;
        ForEach([&any](TEnum, const auto& column) { any = any || column.present; });
        return any;
    }
    // Every present column grows or shrinks to count elements; new values are value-initialised.
    void SetElementCount(unsigned int count)
    {
        ForEach(
            [count](TEnum, auto& column)
            {
                if (column.present)
                    column.values.SetCount(count);
            });
    }
    void Reserve(unsigned int capacity)
    {
        ForEach(
            [capacity](TEnum, auto& column)
            {
                if (column.present)
                    column.values.Reserve(capacity);
            });
    }

private:
    static unsigned int checked(TEnum attribute)
    {
        const auto index = static_cast<unsigned int>(attribute);
        if (index >= kCount)
            CB_THROW(CbExceptionPreconditionViolation, "ZqAttributeSet::Visit",
                     "attribute " + std::to_string(index) + " of " + std::to_string(kCount));
        return index;
    }

    using Columns = std::tuple<ZqAttributeColumn<Ts>...>;

    template <std::size_t I, class TColumns, class F>
    static decltype(auto) visit(TColumns& columns, unsigned int attribute, F& function)
    {
        if constexpr (I + 1 == kCount)
            return function(std::get<I>(columns));
        else if (attribute == I)
            return function(std::get<I>(columns));
        else
            return visit<I + 1>(columns, attribute, function);
    }
    template <class TColumns, class F, std::size_t... I>
    static void forEach(TColumns& columns, F& function, std::index_sequence<I...>)
    {
        (function(static_cast<TEnum>(I), std::get<I>(columns)), ...);
    }

    template <class F, std::size_t... I>
    static void forEachPair(const Columns& columns, const Columns& others, F& function,
                            std::index_sequence<I...>)
    {
        (function(static_cast<TEnum>(I), std::get<I>(columns), std::get<I>(others)), ...);
    }

    Columns m_columns;
};
