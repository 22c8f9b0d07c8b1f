// Runs the program velm in a process of its own.
#pragma once

#include "tests/cli/command.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>

namespace velm::host::test {

// A temporary directory that contains an existing picture, which failures must not change. Removed by the destructor.
class WorkDirectory {
  public:
    WorkDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "velm-test-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory");
        path_ = name;
        write("old.png", kOld);
    }
    ~WorkDirectory() { std::filesystem::remove_all(path_); }
    WorkDirectory(const WorkDirectory &) = delete;
    WorkDirectory &operator=(const WorkDirectory &) = delete;

    std::string file(const std::string &name) const { return (path_ / name).string(); }
    std::string write(const std::string &name, const std::string &text) const {
        std::ofstream(path_ / name, std::ios::binary) << text;
        return file(name);
    }
    std::string read(const std::string &name) const {
        std::ifstream stream(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::string picture() const { return file("old.png"); }
    bool pictureIsUnchanged() const { return read("old.png") == kOld; }
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(path_)) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

  private:
    static constexpr const char *kOld = "an existing picture";
    std::filesystem::path path_;
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
        if (chdir(directory.file("").c_str()) != 0) _exit(127);
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
