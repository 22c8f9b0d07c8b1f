// Runs the program velm in a process of its own.
#pragma once

#include "tests/cli/command.h"
#include "tests/temporary_directory.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>

namespace velm::host::test {

// A temporary directory that contains an existing picture, which failures must not change.
class WorkDirectory : public TemporaryDirectory {
  public:
    WorkDirectory() { write("old.png", kOld); }

    std::string read(const std::string &name) const {
        std::ifstream stream(path() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::string picture() const { return *this / "old.png"; }
    bool pictureIsUnchanged() const { return read("old.png") == kOld; }

  private:
    static constexpr const char *kOld = "an existing picture";
};

// Runs the program with these words, in that directory. `before` runs in the new process before the program;
// `meanwhile` runs in this process at the same time, with the new process's id.
inline Outcome runProgram(
    const WorkDirectory &directory, std::vector<std::string> words, const std::function<void()> &before = [] {},
    const std::function<void(pid_t)> &meanwhile = [](pid_t) {}) {
    words.insert(words.begin(), VELM_PROGRAM);
    std::vector<char *> arguments;
    for (std::string &word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    // Not in the directory, whose files the tests compare.
    std::array<FILE *, 2> streams{std::tmpfile(), std::tmpfile()};
    const pid_t process = fork();
    if (process == 0) {
        for (std::size_t i = 0; i < streams.size(); ++i) dup2(fileno(streams[i]), static_cast<int>(i) + 1);
        if (chdir(directory.path().c_str()) != 0) _exit(127);
        before();
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    meanwhile(process);
    int status = 0;
    waitpid(process, &status, 0);
    Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), "", ""};
    std::array<std::string *, 2> texts{&outcome.out, &outcome.err};
    for (std::size_t i = 0; i < streams.size(); ++i) {
        std::rewind(streams[i]);
        for (int letter; (letter = std::fgetc(streams[i])) != EOF;) *texts[i] += static_cast<char>(letter);
        std::fclose(streams[i]);
    }
    return outcome;
}

} // namespace velm::host::test
