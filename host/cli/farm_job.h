// Jobs for render farms, as the engines that run them take them.
#pragma once

#include <string>
#include <vector>

namespace velm::host {

// What a job renders: frames, or one picture in parts.
struct FarmJob {
    std::string velm;                 // the program
    std::string scene;                // its file, by an absolute name
    std::string picture;              // as --output of "velm render", by an absolute name
    std::vector<int> frames;          // not empty, unless a picture is rendered in parts
    int usualStep = 1;                // of the scene's frames
    int chunk = 1;                    // frames of a task
    int parts = 0;                    // 0 for frames
    std::vector<std::string> options; // further ones of "velm render"
};

// The text of the job for "slurm", "openjd" or "parallel": a template of packaging/farm with the job's values in place
// of its own. [any thread]
std::string farmJobText(const FarmJob &job, const std::string &engine);

// The names of engines that farmJobText knows.
const std::vector<std::string> &farmEngines();

// The word as one word of a shell's command line.
std::string shellQuoted(const std::string &word);

} // namespace velm::host
