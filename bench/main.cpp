// Measures this system against hand-written code: prints a table, and writes it as JSON.
#include "bench/compare.h"

#include "host/services/services.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <string>

int main(int argc, char **argv) {
    using namespace velm::host::bench;
    std::string json, rows, held;
    CLI::App app{"Measures Velm Nodes side by side with hand-written code"};
    app.add_option("--json", json, "write the rows to this file too");
    app.add_option("--rows", rows, "only rows whose text contains this");
    app.add_option("--held-bytes", held, "print the bytes that a large mesh takes, and nothing else")
        ->check(CLI::IsMember({"ours", "reference"}));
    CLI11_PARSE(app, argc, argv);
    velm::host::offerNodeServices();
    try {
        if (!held.empty()) {
            printHeldBytes(held == "ours");
            return 0;
        }
        Table table(rows);
        for (const auto subject : {compareDraws, compareNetworks, comparePictures, compareStart, compareMeshes})
            subject(table);
        if (!json.empty()) table.writeJson(json);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
