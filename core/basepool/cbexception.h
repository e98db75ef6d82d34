#pragma once

#include "basepool/basepool_export.h"

#include <exception>
#include <string>

// The exception of the libraries, thrown by value for programming errors (unknown index, null
// argument, violated precondition) and unreadable data. It records where it was thrown: the source
// path relative to the repository root, the line and the qualified function ("Class::function").
//
//     CB_THROW(CbExceptionPreconditionViolation, "CbPlexManager::CbPlexManager");
class BASEPOOL_API CbException : public std::exception
{
public:
    CbException(const char* file, unsigned int line, const char* function);
    CbException(const char* file, unsigned int line, const char* function, std::string detail);
    CbException(const CbException&) = default;
    CbException& operator=(const CbException&) = default;
    ~CbException() override;

    const char* GetFile() const { return m_file.c_str(); }
    unsigned int GetLine() const { return m_line; }
    const char* GetFunction() const { return m_function.c_str(); }
    // Optional free text given at the throw site; empty for most exceptions.
    const char* GetDetail() const { return m_detail.c_str(); }
    // The exception's kind, e.g. "CbExceptionPreconditionViolation".
    virtual const char* GetKind() const;

    // "<kind> in <function> (<file>:<line>)[: detail]"
    const char* what() const noexcept override;

private:
    std::string m_file;
    unsigned int m_line;
    std::string m_function;
    std::string m_detail;
    mutable std::string m_what;
};

#define CB_DECLARE_EXCEPTION(Name, Base)                                                                     \
    class BASEPOOL_API Name : public Base                                                                    \
    {                                                                                                        \
    public:                                                                                                  \
        using Base::Base;                                                                                    \
        ~Name() override;                                                                                    \
        const char* GetKind() const override;                                                                \
    }

// A precondition of an operation did not hold (wrong argument, wrong state).
CB_DECLARE_EXCEPTION(CbExceptionPreconditionViolation, CbException);
// Stream data written by another version, or truncated.
CB_DECLARE_EXCEPTION(CbExceptionWrongFileVersion, CbException);
// A container operation that cannot be carried out (bad position, empty container).
CB_DECLARE_EXCEPTION(CbExceptionContainer, CbException);
// An allocation that cannot be satisfied.
CB_DECLARE_EXCEPTION(CbExceptionMemory, CbException);
// A file could not be opened, read or written.
CB_DECLARE_EXCEPTION(CbExceptionFile, CbException);

// Throws Type(__FILE__, __LINE__, function[, detail]).
#define CB_THROW(Type, ...) throw Type(__FILE__, __LINE__, __VA_ARGS__)
