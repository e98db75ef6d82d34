// Test classes for the runner's own tests, one per way a subtest can end: passing, failing with a
// message, throwing, crashing, hanging, reporting a random seed, recreating a reference.

#include "basepool/cbexception.h"
#include "fixturebase.h"
#include "zqbase/iunittestrecreate.h"
#include "zqbase/zqfilesystem.h"
#include "zqbase/zqtestenvironment.h"
#include "zqbase/zqunittest.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <unistd.h>

class ZqFixturePass_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixturePass_UnitTest)
public:
    ZqFixturePass_UnitTest() : CFixture({L"eins", L"zwei", L"drei"}) {}

protected:
    EResult runUnitTest(unsigned int index) override
    {
        if (index == 1)
            WriteMessage(eInfo, L"Information über zwei\n");
        return ePassed;
    }
};
CB_IMPLEMENT_RTTI(ZqFixturePass_UnitTest, ZqUnitTest::RTTI);

class ZqFixtureMixed_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureMixed_UnitTest)
public:
    ZqFixtureMixed_UnitTest()
        : CFixture({L"besteht", L"scheitert mit Meldung", L"wirft eine Ausnahme", L"abgebrochen",
                    L"Name mit - und : und #1 ", L"schreibt auf stdout"})
    {
    }

protected:
    EResult runUnitTest(unsigned int index) override
    {
        switch (index)
        {
        case 1:
            WriteMessage(eError, L"Summe ist nicht korrekt\n");
            return eFailed;
        case 2:
            throw std::runtime_error("kaputt im Test");
        case 3:
            return eAborted;
        case 5:
            std::printf("Ausgabe auf stdout\n");
            std::fflush(stdout);
            return ePassed;
        default:
            return ePassed;
        }
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureMixed_UnitTest, ZqUnitTest::RTTI);

class ZqFixtureCrash_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureCrash_UnitTest)
public:
    ZqFixtureCrash_UnitTest()
        : CFixture({L"vorher", L"Speicherzugriffsfehler", L"dazwischen", L"abort", L"danach"})
    {
    }

protected:
    EResult runUnitTest(unsigned int index) override
    {
        switch (index)
        {
        case 0:
            WriteMessage(eInfo, L"vor dem Absturz\n");
            return ePassed;
        case 1:
            WriteMessage(eError, L"gleich knallt es\n");
            std::printf("Ausgabe vor dem Absturz");
            std::raise(SIGSEGV);
            return ePassed;
        case 3:
            std::abort();
        default:
            return ePassed;
        }
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureCrash_UnitTest, ZqUnitTest::RTTI);

class ZqFixtureHang_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureHang_UnitTest)
public:
    ZqFixtureHang_UnitTest() : CFixture({L"schnell", L"hängt", L"danach"}) {}

protected:
    EResult runUnitTest(unsigned int index) override
    {
        if (index == 1)
        {
            std::printf("Ausgabe vor dem Hängen");
            NotePid("hang", getpid());
            for (;;)
                std::this_thread::sleep_for(std::chrono::seconds(1));
        }
        return ePassed;
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureHang_UnitTest, ZqUnitTest::RTTI);

// Crashes before its first subtest.
class ZqFixtureSetupCrash_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureSetupCrash_UnitTest)
public:
    ZqFixtureSetupCrash_UnitTest() : CFixture({L"erster", L"zweiter"}) {}
    void PreallocateStaticData() override { std::abort(); }

protected:
    EResult runUnitTest(unsigned int) override { return ePassed; }
};
CB_IMPLEMENT_RTTI(ZqFixtureSetupCrash_UnitTest, ZqUnitTest::RTTI);

// Reports a seed that %d writes negative; passes only when that seed is replayed.
class ZqFixtureRandom_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureRandom_UnitTest)
public:
    static constexpr std::uint32_t kSeed = 3000000000u;
    ZqFixtureRandom_UnitTest() : CFixture({L"zufällig"}) {}

protected:
    EResult runUnitTest(unsigned int) override
    {
        const std::optional<std::uint32_t> replay = ZqTestEnvironment::GetReplaySeed();
        WriteMessageFormat(eInfo, L"Startwert des Zufallsgenerators: %d\n",
                           static_cast<int>(replay.value_or(kSeed)));
        if (replay != kSeed)
        {
            WriteMessage(eError, L"Punkt liegt außerhalb der Hülle\n");
            return eFailed;
        }
        return ePassed;
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureRandom_UnitTest, ZqUnitTest::RTTI);

// Tells what the runner set up for it: scratch directory, data root, debug flag, premature-exit file.
class ZqFixtureEnvironment_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureEnvironment_UnitTest)
public:
    ZqFixtureEnvironment_UnitTest() : CFixture({L"Umgebung"}) {}

protected:
    EResult runUnitTest(unsigned int) override
    {
        const CString scratch = ZqFileSystem::GetDirectory(ZqFileSystem::eD_Scratch);
        WriteMessageFormat(eInfo, L"scratch=%s\n", scratch.GetString());
        WriteMessageFormat(eInfo, L"data=%S\n", ZqTestEnvironment::GetDataRoot().c_str());
        WriteMessageFormat(eInfo, L"debug=%d\n", ZqTestEnvironment::IsDebugOutputEnabled() ? 1 : 0);
        const char* premature = std::getenv("TEST_PREMATURE_EXIT_FILE");
        WriteMessageFormat(eInfo, L"premature=%d\n", premature && access(premature, F_OK) == 0 ? 1 : 0);
        std::ofstream file(CbWideToUtf8(scratch.Std()) + "/probe.txt");
        file << "probe";
        if (!file.flush())
            return ZqFail(L"Scratch-Verzeichnis nicht beschreibbar: %s\n", scratch.GetString());
        return ePassed;
    }
};
CB_IMPLEMENT_RTTI(ZqFixtureEnvironment_UnitTest, ZqUnitTest::RTTI);

// Subtest 0 can recreate its reference, subtest 1 cannot.
class ZqFixtureRecreate_UnitTest : public CFixture, public IUnitTestRecreate
{
    CB_DECLARE_RTTI(ZqFixtureRecreate_UnitTest)
public:
    ZqFixtureRecreate_UnitTest() : CFixture({L"mit Referenz", L"ohne Referenz"}) {}
    bool CanRecreate(unsigned int index) const override { return index == 0; }
    bool Recreate(unsigned int index) override
    {
        const std::string path = ZqTestEnvironment::GetScratchDirectory() + "/referenz.bin";
        std::ofstream(path) << "referenz " << index;
        WriteMessageFormat(eInfo, L"Referenz geschrieben: %S (neu)\n", path.c_str());
        return true;
    }

protected:
    EResult runUnitTest(unsigned int) override { return ePassed; }
};
CB_IMPLEMENT_RTTI(ZqFixtureRecreate_UnitTest, ZqUnitTest::RTTI);

// Many subtests that do nothing: the runner's own cost per subtest and per class.
class ZqFixtureTrivial_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFixtureTrivial_UnitTest)
public:
    static constexpr unsigned kCount = 1000;

protected:
    unsigned int getSubtestCount() const override { return kCount; }
    CString getSubtestName(unsigned int index) override
    {
        CString name;
        name.Format(L"leer %04u", index);
        return name;
    }
    EResult runUnitTest(unsigned int) override { return ePassed; }
};
CB_IMPLEMENT_RTTI(ZqFixtureTrivial_UnitTest, ZqUnitTest::RTTI);

// A test that reports no subtests: listed with a count of 0, never run.
class ZqFixtureNoSubtests_UnitTest : public CFixture
{
    CB_DECLARE_RTTI(ZqFixtureNoSubtests_UnitTest)
public:
    ZqFixtureNoSubtests_UnitTest() : CFixture({}) {}

protected:
    EResult runUnitTest(unsigned int) override { return eFailed; }
};
CB_IMPLEMENT_RTTI(ZqFixtureNoSubtests_UnitTest, ZqUnitTest::RTTI);

// Registered but abstract: no creation function, so never listed or run.
class ZqFixtureAbstract_UnitTest : public ZqUnitTest
{
    CB_DECLARE_RTTI(ZqFixtureAbstract_UnitTest)
protected:
    EResult runUnitTest(unsigned int) override = 0;
};
CB_IMPLEMENT_RTTI(ZqFixtureAbstract_UnitTest, ZqUnitTest::RTTI);
