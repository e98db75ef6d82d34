// Runs the subtests of the module's tool framework test, built alone into a module of its own,
// under ThreadSanitizer: the threads of "LockingManager" and "Multithreading" and the deliveries
// of the others must not race. Built only with the tsan preset.

#include "basepool/cbfactory.h"
#include "zqbase/zqunittest.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

TEST(ToolFrameworkUnderThreadSanitizer, EverySubtestPasses)
{
    void* module = dlopen(ZQ_TOOLFRAMEWORK_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    {
        std::unique_ptr<ZqUnitTest> test = CbFactory::CreateAs<ZqUnitTest>(L"Tools::CToolFramework_UnitTest");
        ASSERT_TRUE(test);
        test->InitSubtests();
        ASSERT_EQ(test->GetSubtestCount(), 9u);
        for (unsigned int i = 0; i < test->GetSubtestCount(); ++i)
        {
            std::string errors;
            const ZqUnitTest::EResult result = test->RunUnitTest(i);
            for (const auto& message : test->GetMessageStream().Take())
                errors += CbWideToUtf8(message.text.Std()) + "\n";
            EXPECT_EQ(result, ZqUnitTest::ePassed) << CbWideToUtf8(test->GetSubtestName(i).Std()) << "\n"
                                                   << errors;
        }
    }
    dlclose(module);
}
