/// Holds the house to its plan: an include points to the room that it stands in or to one below, never up, and no two
/// files of a room include each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

namespace {

namespace fs = std::filesystem;

const fs::path SOURCES = fs::path(SOURCE_FOLDER) / "src";

/// From the ground up.
const std::vector<std::string> ROOMS = {"model",
                                        "tanek_vs",
                                        "serviceForProtocol/addresses",
                                        "serviceForProtocol/cache",
                                        "serviceForProtocol/requests",
                                        "serviceForProtocol/planning",
                                        "serviceForProtocol/transactions",
                                        "serviceForProtocol/identity"};

using Includes = std::map<std::string, std::set<std::string>>;

/// What each file includes of the house itself.
Includes includesOfHouse()
{
    const std::string include = "#include \"";
    Includes includes;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(SOURCES)) {
        if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp")
            continue;
        std::set<std::string> &included = includes[fs::relative(entry.path(), SOURCES).string()];
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);)
            if (line.rfind(include, 0) == 0)
                included.insert(line.substr(include.size(), line.rfind('"') - include.size()));
    }
    return includes;
}

/// -1: in no room.
long floorOf(const std::string &file)
{
    const auto room = std::find(ROOMS.begin(), ROOMS.end(), fs::path(file).parent_path().string());
    return room == ROOMS.end() ? -1 : room - ROOMS.begin();
}

TEST(House, everyFileStandsInARoomAndIncludesNothingFromAbove)
{
    const Includes includes = includesOfHouse();
    EXPECT_GT(includes.size(), 50U);
    for (const auto &file : includes) {
        EXPECT_GE(floorOf(file.first), 0) << file.first << " stands in no room";
        for (const std::string &included : file.second) {
            EXPECT_EQ(includes.count(included), 1U) << file.first << " includes " << included << ", which is not there";
            EXPECT_LE(floorOf(included), floorOf(file.first)) << file.first << " includes " << included;
        }
    }
}

bool reaches(const Includes &includes, const std::string &from, const std::string &to, std::set<std::string> &seen)
{
    for (const std::string &included : includes.at(from))
        if (included == to || (seen.insert(included).second && reaches(includes, included, to, seen)))
            return true;
    return false;
}

TEST(House, noFileIncludesItselfThroughOthers)
{
    const Includes includes = includesOfHouse();
    for (const auto &file : includes) {
        std::set<std::string> seen;
        EXPECT_FALSE(reaches(includes, file.first, file.first, seen)) << file.first;
    }
}

} // namespace
