#include "zqbase/zqtest/zqtestrecord.h"

#include <cstdlib>
#include <cstring>

bool ZqSubtestRecord::IsFailure() const
{
    return status == EZqTestStatus::eFailed || status == EZqTestStatus::eCrashed ||
           status == EZqTestStatus::eTimeout || status == EZqTestStatus::eInterrupted;
}

std::string ZqSubtestRecord::GetResultName() const
{
    switch (status)
    {
    case EZqTestStatus::eCrashed:
        return "crashed";
    case EZqTestStatus::eTimeout:
        return "timeout";
    case EZqTestStatus::eInterrupted:
        return "interrupted";
    case EZqTestStatus::eSkipped:
    case EZqTestStatus::ePending:
        return "skipped";
    default:
        break;
    }
    switch (outcome)
    {
    case 1:
        return "ePassed";
    case 2:
        return "eFailed";
    case 3:
        return "eException";
    case 4:
        return "eAborted";
    default:
        return "invalid(" + std::to_string(outcome) + ")";
    }
}

std::optional<std::uint32_t> ZqSubtestRecord::GetReportedSeed() const
{
    static const char kPrefix[] = "Startwert des Zufallsgenerators: ";
    std::optional<std::uint32_t> seed;
    for (const ZqTestMessage& message : messages)
    {
        for (std::size_t at = message.text.find(kPrefix); at != std::string::npos;
             at = message.text.find(kPrefix, at + 1))
        {
            const char* digits = message.text.c_str() + at + std::strlen(kPrefix);
            char* end = nullptr;
            // Seeds are written with %d, so a large one may come out negative.
            const long long value = std::strtoll(digits, &end, 10);
            if (end != digits && value >= INT32_MIN && value <= UINT32_MAX)
                seed = static_cast<std::uint32_t>(value);
        }
    }
    return seed;
}

ZqRunRecord::SCounts ZqRunRecord::Count() const
{
    SCounts counts;
    for (const ZqClassRecord& record : classes)
    {
        if (!record.error.empty())
            ++counts.failed;
        for (const ZqSubtestRecord& subtest : record.subtests)
        {
            if (subtest.status == EZqTestStatus::ePassed)
                ++counts.passed;
            else if (subtest.IsFailure())
                ++counts.failed;
            else
                ++counts.skipped;
        }
    }
    return counts;
}
