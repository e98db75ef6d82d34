#pragma once

#include <chrono>
#include <cstdint>

// High-resolution stopwatch of 1 000 000 ticks per second over the steady clock. Starts running
// when constructed.
class CbTimer
{
public:
    static constexpr std::int64_t kTicksPerSecond = 1000000;

    CbTimer() { Reset(); }
    // Restarts the measurement from now.
    void Reset() { m_start = Clock::now(); }
    std::int64_t GetResolution() const { return kTicksPerSecond; }
    std::int64_t GetElapsedTicks() const
    {
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - m_start).count();
    }
    // Elapsed time in seconds with the clock's full resolution (not rounded to ticks).
    double GetElapsedSeconds() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_start;
};
