// The start-up time of the library: from loading it to the first byte of its first request. The program is
// not linked against it, so that each child process loads the library and Qt itself.

#include "bench.h"
#include "sink.h"

#include <cstring>
#include <dlfcn.h>
#include <sys/wait.h>

namespace {

/// Loads the module that uses the library; prints the time before that.
int child(char** argv)
{
    const double begin = clockMilliseconds();
    void* const module = dlopen(BENCH_LOAD_MODULE, RTLD_NOW);
    using SendTask = int (*)(int, char**, const char*);
    const auto send = module ? reinterpret_cast<SendTask>(dlsym(module, "sendFirstTask")) : nullptr;
    if (!send)
        fail(dlerror());
    int argc = 1;
    const int result = send(argc, argv, argv[2]);
    std::printf("%.6f\n", begin);
    return result;
}

double load(const Sink& sink, const char* program)
{
    const std::string command =
        std::string("\"") + program + "\" --load 127.0.0.1:" + std::to_string(sink.port());
    FILE* const output = popen(command.c_str(), "r");
    double begin = 0;
    const bool isRead = output && std::fscanf(output, "%lf", &begin) == 1;
    if (!isRead || pclose(output) != 0)
        fail("load");
    return sink.firstByte() - begin;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--load") == 0)
        return child(argv);
    Bench bench(argc, argv);
    if (!bench.hasSize(0, 0))
        return bench.exitCode();
    const Sink sink("<?xml version=\"1.0\" encoding=\"utf-8\"?><reply><about><model>ABC40</model>"
                    "<version>3.6.1</version></about></reply>");
    bench.reported("load", 50, [&](int) { return load(sink, argv[0]); });
    return bench.exitCode();
}
