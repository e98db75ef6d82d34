#pragma once

#include <memory>
#include <type_traits>
#include <typeinfo>

// A shared reference to an object of any class, kept together with the class it was given as, so
// that it can be handed back typed and written by the object kind registered for that class
// (ZqObjectKind). The objects of a ZqDependencySerializer and the geometry of a ZqDebugGeometry are
// held this way.
//
//     ZqObjectReference reference(std::make_shared<ZqPolyline3D>());
//     reference.As<ZqPolyline3D>()              // the polyline
//     reference.As<ZqTriangulationStatic>()     // null: the reference holds another class
//
// The class is the static type of the pointer it was made from: a reference made from a
// std::shared_ptr<Base> holds a Base, whatever the object's dynamic type, and As<Derived>() is null.
// Two references are equal when they hold the same object as the same class.
class ZqObjectReference
{
public:
    ZqObjectReference() = default;
    // An empty pointer makes an empty reference.
    template <class T>
    requires(!std::is_const_v<T>) ZqObjectReference(std::shared_ptr<T> object)
        : m_type(object ? &typeid(T) : nullptr), m_object(std::static_pointer_cast<void>(std::move(object)))
    {
    }

    // The object when it was given as a T, else null.
    template <class T> std::shared_ptr<T> As() const
    {
        return holds<T>() ? std::static_pointer_cast<T>(m_object) : nullptr;
    }
    template <class T> T* Get() const { return holds<T>() ? static_cast<T*>(m_object.get()) : nullptr; }

    // The class the object was given as; null for an empty reference.
    const std::type_info* GetType() const { return m_type; }
    const void* GetAddress() const { return m_object.get(); }
    explicit operator bool() const { return m_object != nullptr; }

    friend bool operator==(const ZqObjectReference& a, const ZqObjectReference& b)
    {
        return a.m_object == b.m_object &&
               (a.m_type == b.m_type || (a.m_type && b.m_type && *a.m_type == *b.m_type));
    }

private:
    template <class T> bool holds() const { return m_type && *m_type == typeid(T); }

    const std::type_info* m_type = nullptr;
    std::shared_ptr<void> m_object;
};
