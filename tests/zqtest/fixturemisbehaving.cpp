// Test classes that abuse the runner: helper processes that outlive their subtest, outcomes outside
// EResult, a garbled event stream, an exit in the middle of a subtest, set-up that throws while the
// subtests are read, and names that CMake, CTest and the filter syntax treat specially.

#include "fixturebase.h"

#include <chrono>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>

namespace
{
// A forked helper that does nothing for a while; bounded, so that a runner that fails to kill it
// leaves nothing for long.
pid_t forkSleepingHelper(const char* role)
{
    const pid_t pid = fork();
    if (pid == 0)
    {
        for (int i = 0; i < 200; ++i)
            usleep(100000);
        _exit(0);
    }
    NotePid(role, pid);
    return pid;
}

[[noreturn]] void hang()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::seconds(1));
}
} // namespace

// Subtest 0 leaves a helper process behind that holds the runner's pipes open; subtest 2 starts one
// and hangs itself.
class ZqFixtureHelper_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureHelper_UnitTest)
public:
    ZqFixtureHelper_UnitTest() : CFixture({L"lässt einen Helfer zurück", L"danach", L"Helfer und hängt"}) {}

protected:
    EResult runUnitTest(unsigned int index) override
    {
        if (index == 0)
            forkSleepingHelper("helper");
        if (index == 2)
        {
            forkSleepingHelper("helper2");
            NotePid("hanger", getpid());
            hang();
        }
        return ePassed;
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureHelper_UnitTest, ZqUnitTest::RTTI);

class ZqFixtureOutcome_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureOutcome_UnitTest)
public:
    ZqFixtureOutcome_UnitTest() : CFixture({L"gibt 0 zurück", L"gibt 7 zurück"}) {}

protected:
    EResult runUnitTest(unsigned int index) override { return static_cast<EResult>(index == 0 ? 0 : 7); }
};
CB_IMPLEMENT_RTTI(ZqFixtureOutcome_UnitTest, ZqUnitTest::RTTI);

// Writes a line that is no event into the runner's event pipe (descriptor 3 of an isolated child).
class ZqFixtureGarble_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureGarble_UnitTest)
public:
    ZqFixtureGarble_UnitTest() : CFixture({L"stört den Ereignisstrom", L"danach"}) {}

protected:
    EResult runUnitTest(unsigned int index) override
    {
        if (index != 0)
            return ePassed;
        struct stat info
        {
        };
        if (fstat(3, &info) != 0 || !S_ISFIFO(info.st_mode))
            return ZqFail(L"Deskriptor 3 ist keine Pipe\n");
        [[maybe_unused]] const ssize_t written = write(3, "kaputt\n", 7);
        hang();
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureGarble_UnitTest, ZqUnitTest::RTTI);

class ZqFixtureExit_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureExit_UnitTest)
public:
    ZqFixtureExit_UnitTest() : CFixture({L"beendet den Prozess", L"danach"}) {}

protected:
    EResult runUnitTest(unsigned int index) override
    {
        if (index == 0)
            _exit(0);
        return ePassed;
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureExit_UnitTest, ZqUnitTest::RTTI);

// Its subtests cannot even be read.
class ZqFixtureInitThrows_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureInitThrows_UnitTest)
public:
    ZqFixtureInitThrows_UnitTest() : CFixture({L"nie"}) {}

protected:
    void initSubtests() override { throw std::runtime_error("Tabelle fehlt"); }
    EResult runUnitTest(unsigned int) override { return ePassed; }
};
CB_IMPLEMENT_RTTI(ZqFixtureInitThrows_UnitTest, ZqUnitTest::RTTI);

// Names that CMake's test discovery, CTest or the filter syntax take apart, duplicates and an empty
// one. Each subtest writes its index as information; the odd ones fail.
class ZqFixtureNames_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureNames_UnitTest)
public:
    static constexpr unsigned kCount = 20;
    ZqFixtureNames_UnitTest()
        : CFixture({L"GetAt / operator []",
                    L"a;b",
                    L"a:b",
                    L"a-b",
                    L"gleich",
                    L"gleich",
                    L"",
                    L"x*",
                    L"xy",
                    L"[=[ Klammer ]=]",
                    L"back\\slash\\",
                    L"  Leerzeichen  ",
                    L"Kommentar #1",
                    L"-3",
                    L"DISABLED_nicht",
                    L"$ENV{HOME} \"zitiert\" @prefix@ ${x}",
                    L"Tab\tund\nZeilenumbruch",
                    L"über äöü ß",
                    L"gtest_main.cc",
                    L"#5"})
    {
    }

protected:
    EResult runUnitTest(unsigned int index) override
    {
        WriteMessageFormat(eInfo, L"Index %u\n", index);
        if (index % 2 == 0)
            return ePassed;
        WriteMessage(eError, L"ungerade\n");
        return eFailed;
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureNames_UnitTest, ZqUnitTest::RTTI);
