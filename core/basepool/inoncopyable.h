#pragma once

// Base of classes whose objects own something that must not be duplicated (a device resource,
// a lock, a running operation). Derive privately or publicly; copying and assigning do not compile.
class INonCopyable
{
protected:
    INonCopyable() = default;
    ~INonCopyable() = default;

public:
    INonCopyable(const INonCopyable&) = delete;
    INonCopyable& operator=(const INonCopyable&) = delete;
};
