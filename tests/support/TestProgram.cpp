#include "support/TestProgram.h"

#include <QCoreApplication>

#include <cstdio>
#include <map>
#include <string>

namespace {

std::map<std::string, TestProgram::Run>& tests()
{
    static std::map<std::string, TestProgram::Run> all;
    return all;
}

} // namespace

TestProgram::Entry::Entry(const char* test, Run run)
{
    tests().emplace(test, run);
}

int main(int argc, char** argv)
{
    const auto test = argc > 1 ? tests().find(argv[1]) : tests().end();
    if (test == tests().end()) {
        std::fprintf(stderr, "Usage: %s <test> [arguments of Qt Test]\n", argv[0]);
        for (const auto& [name, run] : tests())
            std::fprintf(stderr, "    %s\n", name.c_str());
        return 2;
    }
    // Folders of the user are named after the application: each test has its own.
    QCoreApplication::setApplicationName(argv[1]);
    argv[1] = argv[0];
    return test->second(argc - 1, argv + 1);
}
