// The frame of the benches. A row measures ours and a reference in turn, several times, and judges the ratio or the
// difference of each pair, so that other load on the machine affects both alike. A bench is a table of such rows.
#pragma once

#include <algorithm>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace velm::host::bench {

// What has to hold between ours and the reference.
enum class Goal {
    ratioAtLeast,     // ours / reference, of rates
    ratioAtMost,      // ours / reference, of times and sizes
    differenceAtMost, // ours - reference
};

struct Row {
    std::string what, against;
    std::string unit; // of ours and of the reference
    Goal goal;
    double target;
    double ours = 0, reference = 0, ratio = 0, difference = 0; // medians over the rounds

    bool held() const;
};

class Table {
  public:
    // Rows whose `what` does not contain `wanted` are not measured.
    explicit Table(std::string wanted) : wanted_(std::move(wanted)) {}

    // Measures both in turn for `rounds` rounds, after one warm-up round if there are several, and prints the row. Each
    // function returns one figure in the unit of the row.
    void compare(Row row, int rounds, const std::function<double()> &ours, const std::function<double()> &reference);

    // A list of objects: what, against, unit, goal, target, ours, reference, ratio, difference, held. Throws
    // std::runtime_error.
    void writeJson(const std::string &file) const;

  private:
    std::string wanted_;
    std::vector<Row> rows_;
};

double median(std::vector<double> values);

// The processor time of one of `calls` calls in nanoseconds. Unlike wall-clock time, it does not include the time that
// other programs take.
template <class Call>
double nanosecondsOf(int calls, Call call) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
    };
    const double begin = now();
    for (int i = 0; i < calls; ++i) call();
    return (now() - begin) / calls;
}

// Makes the compiler believe that a value is used.
template <class Value>
inline void keep(const Value &value) {
    asm volatile("" : : "m"(value) : "memory");
}

// The subjects, one file each.
void compareDraws(Table &table);    // the random stream
void compareNetworks(Table &table); // evaluation through the host
void comparePictures(Table &table); // whole pictures against loops written by hand
void compareStart(Table &table);    // starting the program; the time to the first ray, and the memory used then
void compareMeshes(Table &table);   // reading large meshes

// Builds a mesh of ten million triangles, with our code or the reference's, and prints how many bytes it holds.
// compareStart runs this in a new process.
void printHeldBytes(bool ours);

} // namespace velm::host::bench
