// The algorithm protocol of ZqAlgorithm: exceptions become a false result with a reason, a result
// is computed once until the inputs or the flags change, and the unit-test hooks.

#include "basepool/cbexception.h"
#include "zqbase/zqalgorithm.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace
{
class Summe : public ZqAlgorithm
{
public:
    enum EFlags : unsigned int
    {
        eF_Double = 1,
        eF_Negate = 2,
    };

    std::vector<int> input;
    int output = 0;
    int expected = 0;
    int computeCalls = 0;
    int flagChanges = 0;
    enum class EThrow
    {
        eNone,
        eStd,
        eOther,
        ePrecondition,
    } throwing = EThrow::eNone;

protected:
    void checkPreConditionsInit() const override
    {
        if (throwing == EThrow::ePrecondition)
            CB_THROW(CbExceptionPreconditionViolation, "Summe::checkPreConditionsInit", "keine Eingabe");
    }
    void compute() override
    {
        ++computeCalls;
        if (throwing == EThrow::eStd)
            throw std::runtime_error("Überlauf");
        if (throwing == EThrow::eOther)
            throw 42;
        output = 0;
        for (int value : input)
            output += value;
        if (IsFlagSet(eF_Double))
            output *= 2;
        if (IsFlagSet(eF_Negate))
            output = -output;
    }
    void onFlagsChanged() override { ++flagChanges; }
    bool compareUnitTestResult() const override { return output == expected; }
};

using Flags = CbFlags<Summe::EFlags>;
} // namespace

TEST(ZqAlgorithmCompute, ExceptionsBecomeFalseWithTheirReason)
{
    Summe sum;
    sum.input = {1, 2};
    sum.throwing = Summe::EThrow::eStd;
    EXPECT_FALSE(sum.Compute());
    EXPECT_FALSE(sum.IsCalculated());
    EXPECT_EQ(sum.GetLastError(), "Überlauf");

    sum.throwing = Summe::EThrow::eOther;
    EXPECT_FALSE(sum.Compute());
    EXPECT_EQ(sum.GetLastError(), "unknown exception");

    // A violated precondition stops before the computation.
    sum.throwing = Summe::EThrow::ePrecondition;
    const int callsBefore = sum.computeCalls;
    EXPECT_FALSE(sum.Compute());
    EXPECT_EQ(sum.computeCalls, callsBefore);
    EXPECT_NE(sum.GetLastError().find("keine Eingabe"), std::string::npos) << sum.GetLastError();

    // A failed computation is tried again, and success clears the reason.
    sum.throwing = Summe::EThrow::eNone;
    EXPECT_TRUE(sum.Compute());
    EXPECT_EQ(sum.output, 3);
    EXPECT_TRUE(sum.GetLastError().empty());
}

TEST(ZqAlgorithmCompute, ComputesOnceUntilInputOrFlagsChange)
{
    Summe sum;
    sum.input = {1, 2, 3};
    EXPECT_FALSE(sum.Compute(ZqAlgorithm::eCF_None));
    EXPECT_EQ(sum.computeCalls, 0);
    EXPECT_FALSE(sum.checkOutputData());
    EXPECT_TRUE(sum.Compute());
    EXPECT_TRUE(sum.checkOutputData());
    EXPECT_TRUE(sum.Compute());
    EXPECT_TRUE(sum.Compute(ZqAlgorithm::eCF_None));
    EXPECT_EQ(sum.computeCalls, 1);

    sum.input.push_back(4);
    sum.setInputChanged();
    EXPECT_FALSE(sum.IsCalculated());
    EXPECT_FALSE(sum.checkOutputData());
    EXPECT_TRUE(sum.Compute());
    EXPECT_EQ(sum.output, 10);
    EXPECT_EQ(sum.computeCalls, 2);

    sum.SetFlags(Flags(Summe::eF_Double));
    EXPECT_EQ(sum.flagChanges, 1);
    EXPECT_TRUE(sum.Compute());
    EXPECT_EQ(sum.output, 20);
    // Setting or adding flags that are already set changes nothing.
    sum.SetFlags(Flags(Summe::eF_Double));
    sum.AddFlags(Flags(Summe::eF_Double));
    EXPECT_TRUE(sum.Compute());
    EXPECT_EQ(sum.computeCalls, 3);
    EXPECT_EQ(sum.flagChanges, 1);

    sum.AddFlags(Flags(Summe::eF_Negate));
    EXPECT_TRUE(sum.Compute());
    EXPECT_EQ(sum.output, -20);
    sum.RemoveFlags(Flags(Summe::eF_Double));
    EXPECT_TRUE(sum.IsFlagSet(Summe::eF_Negate));
    EXPECT_FALSE(sum.IsFlagSet(Summe::eF_Double));
    EXPECT_TRUE(sum.Compute());
    EXPECT_EQ(sum.output, -10);
    EXPECT_EQ(sum.computeCalls, 5);

    // Force computes even when nothing changed.
    EXPECT_TRUE(sum.Compute(ZqAlgorithm::eCF_Compute | ZqAlgorithm::eCF_Force));
    EXPECT_EQ(sum.computeCalls, 6);
}

TEST(ZqAlgorithmHooks, RunUnitTestComparesAFreshResultAndFlagsTravelWithTheInput)
{
    Summe sum;
    sum.input = {2, 3};
    sum.expected = 5;
    EXPECT_EQ(sum.RunUnitTest(), ZqUnitTest::ePassed);
    sum.expected = 6;
    EXPECT_EQ(sum.RunUnitTest(), ZqUnitTest::eFailed);
    sum.throwing = Summe::EThrow::eStd;
    EXPECT_EQ(sum.RunUnitTest(), ZqUnitTest::eAborted);
    sum.throwing = Summe::EThrow::eNone;
    const int calls = sum.computeCalls;
    EXPECT_TRUE(sum.Recreate());
    EXPECT_EQ(sum.computeCalls, calls + 1);

    sum.SetFlags(Flags(Summe::eF_Double) | Flags(Summe::eF_Negate));
    std::vector<unsigned char> buffer;
    CbStreamWriteBinary out(buffer);
    sum.SerializeUnitTestInput(out);

    Summe read;
    read.Compute();
    CbStreamReadBinary in(buffer);
    read.SerializeUnitTestInput(in);
    EXPECT_EQ(read.GetFlagBits(), sum.GetFlagBits());
    EXPECT_FALSE(read.IsCalculated());
    EXPECT_TRUE(in.IsAtEnd());
}
