#include "zqbase/zqobjectkind.h"

#include "basepool/cbfactory.h"

CB_IMPLEMENT_RTTI(ZqObjectKind);

ZqObjectKind::~ZqObjectKind() = default;
ZqObjectWriter::~ZqObjectWriter() = default;
ZqObjectReader::~ZqObjectReader() = default;

std::uint32_t ZqObjectReader::ReadCount(std::uint64_t bytesPerElement)
{
    const std::uint32_t count = m_stream.ReadCount();
    const std::uint64_t remaining = m_stream.GetRemaining();
    if (bytesPerElement && count > remaining / bytesPerElement)
        CB_THROW(CbExceptionWrongFileVersion, "ZqObjectReader::ReadCount",
                 "a count of " + std::to_string(count) + " elements of at least " +
                     std::to_string(bytesPerElement) + " bytes each, but only " + std::to_string(remaining) +
                     " bytes are left in the record");
    return count;
}

std::unique_ptr<ZqObjectKind> ZqObjectKind::Find(const wchar_t* name)
{
    // Only kinds are created: a name from a file must not make any other registered class run.
    const CbRTTI* record = CbRTTI::Find(name);
    if (!record || !record->IsKindOf(RTTI))
        return nullptr;
    return CbFactory::CreateAs<ZqObjectKind>(name);
}

std::unique_ptr<ZqObjectKind> ZqObjectKind::Find(const std::type_info& type)
{
    const std::vector<const CbRTTI*> records = CbRTTI::GetRegistered();
    for (auto record = records.rbegin(); record != records.rend(); ++record)
    {
        if (!(*record)->IsKindOf(RTTI) || !(*record)->CanCreate())
            continue;
        std::unique_ptr<ZqObjectKind> kind = CbFactory::CreateAs<ZqObjectKind>((*record)->GetName());
        if (kind && kind->GetType() == type)
            return kind;
    }
    return nullptr;
}
