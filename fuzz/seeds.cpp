// Makes the seed corpora of the fuzzers: velm_fuzz_seeds DIRECTORY FILE ... sorts object files, meshes, scene files,
// JSON scenes and saved data (the output of velm_conformance) into one directory for each fuzzer, and adds the saved
// data of the module's nodes with their default settings, and random call scripts.
#include "fuzz/module_nodes.h"

#include "host/check/random_walk/call_script.h"
#include "host/files/object_file.h"
#include "host/graph/network.h"
#include "host/graph/node_data.h"
#include "host/io/files.h"
#include "host/state/save_state.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <sstream>
#include <string_view>

namespace fs = std::filesystem;
using namespace velm::host;

namespace {

constexpr std::size_t kScripts = 30, kScriptSize = 400; // bytes
constexpr std::size_t kLargest = 100'000; // bytes; larger inputs are left out, since small ones are tried faster

class Corpus {
  public:
    explicit Corpus(fs::path directory) : directory_(std::move(directory)) {}

    void add(const std::string &reader, std::string_view bytes) {
        if (bytes.size() > kLargest) return;
        fs::create_directories(directory_ / reader);
        writeFileAtomically((directory_ / reader / fmt::format("seed_{:04}", count_++)).string(), bytes);
    }

  private:
    fs::path directory_;
    int count_ = 0;
};

// Adds an object, its networks, and an object that has only its surfaces, so that most mutations change one.
void addObject(Corpus &corpus, const std::string &bytes, const std::string &name) {
    corpus.add("object_file", bytes);
    corpus.add("object_geometry", bytes);
    if (bytes.substr(0, 4) != "FORM" || bytes.substr(8, 4) != "LWO2") return; // an older format, which is refused
    const ObjectFile file(bytes, name);
    ObjectFile surfaces(std::string("FORM\0\0\0\4LWO2", 12), name);
    for (std::size_t i = 0; i < file.surfaces().size(); ++i) {
        const auto network = file.network(i);
        if (!network) continue;
        surfaces.addSurface(file.surfaces()[i].name, {}, *network);
        corpus.add("network", network->substr(6)); // without its name and size
    }
    corpus.add("object_file", surfaces.write());
}

// The input of the node_state target for saved data.
std::string stateInput(std::size_t server, int mode, const std::string &bytes) {
    return static_cast<char>(server | (mode == kStateText ? 0x80U : 0U)) + bytes;
}

std::size_t indexOf(std::string_view server) {
    const auto &servers = serverList().all();
    std::size_t index = 0;
    while (index < servers.size() && servers[index]->name() != server) ++index;
    return index;
}

std::string bytesOf(std::string_view hexadecimal) {
    std::string bytes;
    std::string digits;
    for (const char digit : hexadecimal) {
        if (digit == ' ') continue;
        digits += digit;
        if (digits.size() < 2) continue;
        bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
        digits.clear();
    }
    return bytes;
}

// Adds the saved data in a conformance report, from its lines "node SERVER" and "saved BYTES".
void addSavedData(Corpus &corpus, const std::string &text) {
    std::istringstream lines(text);
    std::size_t server = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("node ")) server = indexOf(line.substr(5));
        if (line.starts_with("saved ") && server < serverList().all().size())
            corpus.add("node_state", stateInput(server, kStateBinary, bytesOf(line.substr(6))));
    }
}

// Adds the saved data of each node, and of a network of all nodes.
void addNodes(Corpus &corpus) {
    Network network("Seeds", "Seeds", nullptr, nullptr);
    const auto &servers = serverList().all();
    for (std::size_t i = 0; i < servers.size(); ++i) {
        const HostNode &node = network.addNode(*servers[i]);
        for (const int mode : {kStateBinary, kStateText}) {
            StateWriter writer(mode);
            saveData(node, *writer.state());
            corpus.add("node_state", stateInput(i, mode, writer.finish()));
        }
    }
    StateWriter binary(kStateBinary), text(kStateText);
    network.save(*binary.state());
    corpus.add("network", binary.finish());
    const HostBlockId block{.id = 0x4e4f4453, .token = "Nodal_Block"};
    text.state()->beginBlock(text.state()->data, &block, 0);
    network.save(*text.state());
    text.state()->endBlock(text.state()->data);
    corpus.add("scene_text", "LWSC\n5\n" + text.finish());
}

void addScripts(Corpus &corpus) {
    for (std::size_t i = 0; i < kScripts; ++i) corpus.add("call_script", randomCallScript(i, kScriptSize));
}

void addFile(Corpus &corpus, const fs::path &path) {
    const std::string bytes = readFile(path.string());
    if (path.extension() == ".lwo") addObject(corpus, bytes, path.string());
    std::string ending = path.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char letter) { return std::tolower(letter); });
    constexpr std::array<std::string_view, 5> kMeshes = {".ply", ".stl", ".obj", ".3ds", ".fbx"};
    if (std::ranges::find(kMeshes, ending) != kMeshes.end()) corpus.add("mesh_file", bytes);
    if (path.extension() == ".lws") {
        corpus.add("scene_text", bytes);
        corpus.add("lws_scene", bytes);
    }
    if (path.extension() == ".json") corpus.add("scene_json", bytes);
    if (path.extension() == ".txt") addSavedData(corpus, bytes);
}

} // namespace

int main(int count, char **arguments) {
    if (count < 2) {
        fmt::print(stderr, "usage: velm_fuzz_seeds DIRECTORY FILE ...\n");
        return 2;
    }
    try {
        velm::host::fuzz::listModuleNodes();
        Corpus corpus(arguments[1]);
        addNodes(corpus);
        addScripts(corpus);
        for (int i = 2; i < count; ++i) addFile(corpus, arguments[i]);
        return 0;
    } catch (const std::exception &error) {
        fmt::print(stderr, "velm_fuzz_seeds: {}\n", error.what());
        return 1;
    }
}
