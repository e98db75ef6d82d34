// Throughput of ZqMD5 and ZqSHA1 against libcrypto on buffers of 1 MiB and 64 MiB, in one process,
// with the ratio of the times ours / libcrypto printed at the end (best run of each, so that
// --benchmark_repetitions=N steadies it).
//
//     build/release/bin/zqdigest_bench [--benchmark_repetitions=5]

#include "zqbase/zqmd5.h"
#include "zqbase/zqsha1.h"

#include "zqbenchmain.h"

#include <cstdio>
#include <functional>
#include <openssl/evp.h>
#include <random>
#include <string>
#include <vector>

namespace
{
const std::vector<unsigned char>& buffer(std::size_t size)
{
    static std::map<std::size_t, std::vector<unsigned char>> buffers;
    std::vector<unsigned char>& bytes = buffers[size];
    if (bytes.size() != size)
    {
        std::mt19937_64 generator(size);
        bytes.resize(size);
        for (auto& byte : bytes)
            byte = static_cast<unsigned char>(generator());
    }
    return bytes;
}

void libcrypto(benchmark::State& state, const char* algorithm)
{
    const std::vector<unsigned char>& bytes = buffer(static_cast<std::size_t>(state.range(0)));
    EVP_MD* md = EVP_MD_fetch(nullptr, algorithm, nullptr);
    if (!md)
    {
        state.SkipWithError("libcrypto lacks the algorithm");
        return;
    }
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    for (auto _ : state)
    {
        EVP_Digest(bytes.data(), bytes.size(), digest, &size, md, nullptr);
        benchmark::DoNotOptimize(digest);
    }
    EVP_MD_free(md);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void ourMD5(benchmark::State& state)
{
    const std::vector<unsigned char>& bytes = buffer(static_cast<std::size_t>(state.range(0)));
    ZqMD5 md5;
    for (auto _ : state)
    {
        md5.Update(bytes.data(), bytes.size());
        benchmark::DoNotOptimize(md5.Finish());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void ourSHA1(benchmark::State& state, ZqSHA1::EImplementation implementation)
{
    const std::vector<unsigned char>& bytes = buffer(static_cast<std::size_t>(state.range(0)));
    ZqSHA1 sha1(implementation);
    for (auto _ : state)
    {
        sha1.Update(bytes.data(), bytes.size());
        benchmark::DoNotOptimize(sha1.Finish());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::int64_t> sizes = {1 << 20, 64 << 20};
    // Google Benchmark appends the argument: "MD5/Zq/1048576".
    benchmark::RegisterBenchmark("MD5/Zq", ourMD5)->Arg(sizes[0])->Arg(sizes[1]);
    benchmark::RegisterBenchmark("MD5/libcrypto", libcrypto, "MD5")->Arg(sizes[0])->Arg(sizes[1]);
    benchmark::RegisterBenchmark("SHA1/Zq", ourSHA1, ZqSHA1::eI_Automatic)->Arg(sizes[0])->Arg(sizes[1]);
    benchmark::RegisterBenchmark("SHA1/ZqPortable", ourSHA1, ZqSHA1::eI_Portable)
        ->Arg(sizes[0])
        ->Arg(sizes[1]);
    benchmark::RegisterBenchmark("SHA1/libcrypto", libcrypto, "SHA1")->Arg(sizes[0])->Arg(sizes[1]);

    std::vector<ZqBenchPair> pairs;
    for (const std::int64_t size : sizes)
    {
        const std::string suffix = '/' + std::to_string(size);
        pairs.push_back({"MD5/Zq" + suffix, "MD5/libcrypto" + suffix});
        pairs.push_back({"SHA1/Zq" + suffix, "SHA1/libcrypto" + suffix});
        pairs.push_back({"SHA1/ZqPortable" + suffix, "SHA1/libcrypto" + suffix});
    }
    return ZqBenchMain(argc, argv, pairs,
                       [](const ZqBenchReporter&)
                       {
                           std::printf("\nSHA-1 block function of ZqSHA1 here: %s\n",
                                       ZqSHA1::HasShaExtensions() ? "SHA extensions"
                                                                  : "portable (no SHA extensions)");
                       });
}
