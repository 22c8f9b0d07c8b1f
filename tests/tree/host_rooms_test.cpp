// The rooms of the stand-alone host are the directories listed in host/CMakeLists.txt. Each may include only those that
// its line names.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct Room {
    std::string name;               // "scene/format": the directory below host/
    std::vector<std::string> below; // the rooms whose headers it may include
};

std::string textOf(const fs::path &file) {
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

std::vector<std::string> wordsOf(const std::string &text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

// The lines "velm_room(name ROOMS ... PUBLIC ... PRIVATE ...)", in their order.
std::vector<Room> listedRooms() {
    const std::string text = textOf(fs::path(VELM_SOURCE_DIR) / "host/CMakeLists.txt");
    static const std::regex line(R"(\nvelm_room\(([^)]*)\))");
    std::vector<Room> rooms;
    for (std::sregex_iterator it(text.begin(), text.end(), line), end; it != end; ++it) {
        const std::vector<std::string> words = wordsOf((*it)[1]);
        Room &room = rooms.emplace_back(Room{.name = words.front(), .below = {}});
        bool listing = false;
        for (const std::string &word : words) {
            if (word == "ROOMS" || word == "PUBLIC" || word == "PRIVATE")
                listing = word == "ROOMS";
            else if (listing)
                room.below.push_back(word);
        }
    }
    return rooms;
}

// The directory of a path such as "host/scene/format/json.h", below host/: "scene/format".
std::string roomOf(const std::string &path) { return fs::path(path).parent_path().lexically_relative("host").string(); }

bool isSource(const fs::path &path) { return path.extension() == ".h" || path.extension() == ".cpp"; }

TEST(HostRooms, EveryRoomNamesOnlyEarlierRooms) {
    std::vector<std::string> seen;
    for (const Room &room : listedRooms()) {
        for (const std::string &below : room.below)
            EXPECT_EQ(std::ranges::count(seen, below), 1) << room.name << " names " << below;
        EXPECT_EQ(std::ranges::count(seen, room.name), 0) << room.name << " is listed twice";
        seen.push_back(room.name);
    }
    EXPECT_GT(seen.size(), 10U) << "the list was not found";
}

TEST(HostRooms, EveryIncludeIsFromTheRoomItselfOrOneThatItNames) {
    static const std::regex pattern(R"re(^\s*#\s*include\s*"(host/[^"]+)")re");
    const fs::path root = VELM_SOURCE_DIR;
    const std::vector<Room> rooms = listedRooms();
    std::vector<std::string> used; // "room below"
    for (const auto &entry : fs::recursive_directory_iterator(root / "host")) {
        if (!entry.is_regular_file() || !isSource(entry.path())) continue;
        const std::string file = fs::relative(entry.path(), root).string();
        const auto room = std::ranges::find(rooms, roomOf(file), &Room::name);
        ASSERT_NE(room, rooms.end()) << file << " is in no room of host/CMakeLists.txt";
        std::ifstream stream(entry.path());
        std::string line;
        for (int number = 1; std::getline(stream, line); ++number) {
            std::smatch match;
            if (!std::regex_search(line, match, pattern)) continue;
            const std::string included = roomOf(match[1]);
            if (included == room->name) continue;
            EXPECT_EQ(std::ranges::count(room->below, included), 1)
                << file << ":" << number << " includes " << match[1] << ", but the room " << room->name
                << " does not name the room " << included << " in host/CMakeLists.txt";
            used.push_back(room->name + " " + included);
        }
    }
    for (const Room &room : rooms)
        for (const std::string &below : room.below)
            EXPECT_GT(std::ranges::count(used, room.name + " " + below), 0)
                << "the room " << room.name << " names the room " << below << ", but includes nothing of it";
}

} // namespace
