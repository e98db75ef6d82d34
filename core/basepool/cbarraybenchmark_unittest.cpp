// The benchmark of CbArray_UnitTest: 600000 numbers summed by index, pointer, iterator and
// range-based loop, forwards and backwards, from a C array, CbArray, std::vector and
// tbb::concurrent_vector.

#include "basepool/cbarray_unittest.h"
#include "zqbase/cbtimer.h"

namespace
{
constexpr unsigned int kBenchmarkElements = 600000;
constexpr long long kBenchmarkSum = 179999700000LL;

const wchar_t* const kBenchmarkNames[] = {
    L"C-Array über Index (vorwärts)",
    L"C-Array über Index (rückwärts)",
    L"C-Array über Pointer-Arithmetik (vorwärts)",
    L"C-Array über Pointer-Arithmetik (rückwärts)",
    L"CbArray über Index (vorwärts)",
    L"CbArray über Index (rückwärts)",
    L"CbArray über Pointer-Arithmetik (vorwärts)",
    L"CbArray über Pointer-Arithmetik (rückwärts)",
    L"CbArray über begin / end (vorwärts)",
    L"CbArray über rbegin / rend (rückwärts)",
    L"std::vector über Index (vorwärts)",
    L"std::vector über Index (rückwärts)",
    L"std::vector mit Iterator (vorwärts)",
    L"std::vector mit Iterator (rückwärts)",
    L"CArray über Index (vorwärts)",
    L"CArray über Index (rückwärts)",
    L"CArray über Pointer-Arithmetik (vorwärts)",
    L"CArray über Pointer-Arithmetik (rückwärts)",
    L"CAtlArray über Index (vorwärts)",
    L"CAtlArray über Index (rückwärts)",
    L"CAtlArray über Pointer-Arithmetik (vorwärts)",
    L"CAtlArray über Pointer-Arithmetik (rückwärts)",
    L"CbArray über range-based-loop (vorwärts)",
    L"CbArray über range-based-loop (rückwärts)",
    L"std::vector über range-based-loop (vorwärts)",
    L"concurrency::concurrent_vector über Index (vorwärts)",
    L"concurrency::concurrent_vector über Index (rückwärts)",
    L"concurrency::concurrent_vector mit Iterator (vorwärts)",
    L"concurrency::concurrent_vector mit Iterator (rückwärts)",
    L"concurrency::concurrent_vector über range-based-loop (vorwärts)",
};
constexpr unsigned int kBenchmarkCount = sizeof(kBenchmarkNames) / sizeof(kBenchmarkNames[0]);

// The walks of the benchmark, one function each so that every contender gets the same treatment
// from the optimizer.
template <class TArray> [[gnu::noinline]] long long sumIndexForward(const TArray& array, unsigned int count)
{
    long long sum = 0;
    for (unsigned int i = 0; i < count; ++i)
        sum += array[i];
    return sum;
}
template <class TArray> [[gnu::noinline]] long long sumIndexBackward(const TArray& array, unsigned int count)
{
    long long sum = 0;
    for (unsigned int i = count; i-- > 0;)
        sum += array[i];
    return sum;
}
[[gnu::noinline]] long long sumPointerForward(const int* first, unsigned int count)
{
    long long sum = 0;
    for (const int *p = first, *last = first + count; p != last; ++p)
        sum += *p;
    return sum;
}
[[gnu::noinline]] long long sumPointerBackward(const int* first, unsigned int count)
{
    long long sum = 0;
    for (const int* p = first + count; p != first;)
        sum += *--p;
    return sum;
}
template <class TArray> [[gnu::noinline]] long long sumIteratorForward(const TArray& array)
{
    long long sum = 0;
    for (auto it = array.begin(); it != array.end(); ++it)
        sum += *it;
    return sum;
}
template <class TArray> [[gnu::noinline]] long long sumIteratorBackward(const TArray& array)
{
    long long sum = 0;
    for (auto it = array.rbegin(); it != array.rend(); ++it)
        sum += *it;
    return sum;
}
template <class TRange> [[gnu::noinline]] long long sumRangeBased(const TRange& range)
{
    long long sum = 0;
    for (int value : range)
        sum += value;
    return sum;
}
} // namespace

unsigned int CbArray_UnitTest::getBenchmarkCount() const
{
    return kBenchmarkCount;
}

CString CbArray_UnitTest::getBenchmarkName(unsigned int index)
{
    return index < kBenchmarkCount ? CString(kBenchmarkNames[index]) : CString();
}

unsigned int CbArray_UnitTest::getGroup(unsigned int index) const
{
    switch (index)
    {
    case 2:
    case 3:
    case 6:
    case 7:
    case 16:
    case 17:
    case 20:
    case 21:
        return 1;
    case 8:
    case 9:
    case 12:
    case 13:
    case 22:
    case 23:
    case 24:
    case 27:
    case 28:
    case 29:
        return 2;
    default:
        return 0;
    }
}

void CbArray_UnitTest::onBeforeRun()
{
    WriteMessage(eInfo,
                 L"Benchmark C-Array vs. CbArray vs. CbArray vs. CArray vs. CAtlArray vs. std::vector");
    m_cArray = std::make_unique<int[]>(kBenchmarkElements);
    m_cbArray.SetCapacity(kBenchmarkElements);
    m_vector.reserve(kBenchmarkElements);
    for (unsigned int i = 0; i < kBenchmarkElements; ++i)
    {
        const int value = static_cast<int>(i);
        m_cArray[i] = value;
        m_cbArray.Add(value);
        m_vector.push_back(value);
        m_concurrentVector.push_back(value);
    }
}

void CbArray_UnitTest::onAfterRun(bool)
{
    m_cArray.reset();
    m_cbArray.RemoveAll();
    std::vector<int>().swap(m_vector);
    tbb::concurrent_vector<int>().swap(m_concurrentVector);
}

bool CbArray_UnitTest::runBenchmark(unsigned int index, SBenchmarkData& data)
{
    const unsigned int n = kBenchmarkElements;
    const int* cArray = m_cArray.get();
    CbTimer timer;
    long long sum = 0;
    switch (index)
    {
    case 0:
        sum = sumIndexForward(cArray, n);
        break;
    case 1:
        sum = sumIndexBackward(cArray, n);
        break;
    case 2:
        sum = sumPointerForward(cArray, n);
        break;
    case 3:
        sum = sumPointerBackward(cArray, n);
        break;
    case 4:
        sum = sumIndexForward(m_cbArray, n);
        break;
    case 5:
        sum = sumIndexBackward(m_cbArray, n);
        break;
    case 6:
        sum = sumPointerForward(m_cbArray.GetData(), n);
        break;
    case 7:
        sum = sumPointerBackward(m_cbArray.GetData(), n);
        break;
    case 8:
        sum = sumIteratorForward(m_cbArray);
        break;
    case 9:
        sum = sumIteratorBackward(m_cbArray);
        break;
    case 10:
        sum = sumIndexForward(m_vector, n);
        break;
    case 11:
        sum = sumIndexBackward(m_vector, n);
        break;
    case 12:
        sum = sumIteratorForward(m_vector);
        break;
    case 13:
        sum = sumIteratorBackward(m_vector);
        break;
    case 14:
    case 15:
    case 16:
    case 17:
    case 18:
    case 19:
    case 20:
    case 21:
        // The platform's class-library arrays have no counterpart here.
        data.notAvailable = true;
        return true;
    case 22:
        sum = sumRangeBased(m_cbArray);
        break;
    case 23:
        sum = sumRangeBased(m_cbArray.Reversed());
        break;
    case 24:
        sum = sumRangeBased(m_vector);
        break;
    case 25:
        sum = sumIndexForward(m_concurrentVector, n);
        break;
    case 26:
        sum = sumIndexBackward(m_concurrentVector, n);
        break;
    case 27:
        sum = sumIteratorForward(m_concurrentVector);
        break;
    case 28:
        sum = sumIteratorBackward(m_concurrentVector);
        break;
    case 29:
        sum = sumRangeBased(m_concurrentVector);
        break;
    default:
        WriteMessage(eError, L"Unbekannter Benchmark");
        return false;
    }
    data.AddSample(timer.GetElapsedSeconds());
    data.result = static_cast<double>(sum);
    if (sum != kBenchmarkSum)
    {
        WriteMessage(eError, L"Summe ist nicht korrekt");
        return false;
    }
    return true;
}
