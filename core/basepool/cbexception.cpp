#include "basepool/cbexception.h"

CbException::CbException(const char* file, unsigned int line, const char* function)
    : m_file(file ? file : ""), m_line(line), m_function(function ? function : "")
{
}

CbException::CbException(const char* file, unsigned int line, const char* function, std::string detail)
    : m_file(file ? file : ""), m_line(line), m_function(function ? function : ""),
      m_detail(std::move(detail))
{
}

CbException::~CbException() = default;

const char* CbException::GetKind() const
{
    return "CbException";
}

const char* CbException::what() const noexcept
{
    try
    {
        m_what =
            std::string(GetKind()) + " in " + m_function + " (" + m_file + ":" + std::to_string(m_line) + ")";
        if (!m_detail.empty())
            m_what += ": " + m_detail;
        return m_what.c_str();
    }
    catch (...)
    {
        return "CbException";
    }
}

#define CB_DEFINE_EXCEPTION(Name)                                                                            \
    Name::~Name() = default;                                                                                 \
    const char* Name::GetKind() const                                                                        \
    {                                                                                                        \
        return #Name;                                                                                        \
    }

CB_DEFINE_EXCEPTION(CbExceptionPreconditionViolation)
CB_DEFINE_EXCEPTION(CbExceptionWrongFileVersion)
CB_DEFINE_EXCEPTION(CbExceptionContainer)
CB_DEFINE_EXCEPTION(CbExceptionMemory)
CB_DEFINE_EXCEPTION(CbExceptionFile)
