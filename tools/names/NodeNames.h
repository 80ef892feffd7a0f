#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace vdrdump {

using NodeIds = std::array<uint32_t, 3>;  // they name a node, the same in every frame

// "0x2:0xca:0x0", as the views of a database have it.
std::string idsText(const NodeIds& ids);

// What a user calls the nodes, from a file with a line per node: its three ids, decimal or with 0x
// in front, and the name, which is the rest of the line. Slashes, colons, commas or blanks stand
// between; empty lines, and those that begin with '#', are passed over.
//
//   0x2:0xca:0x0  plug-in algorithms
//
// A line may state the unit of the stamps, which are then all of one clock:
//
//   clock nanoseconds
class NodeNames {
public:
    NodeNames() = default;
    // Throws std::runtime_error, which says what was expected and where.
    static NodeNames fromFile(const std::string& path);
    static NodeNames fromText(const std::string& file, const std::string& text);

    // "plug-in algorithms (0x2:0xca:0x0)", or the ids alone where there is no name.
    std::string nameOf(const NodeIds& ids) const;
    // "plug-in algorithms", empty where there is no name.
    std::string find(const NodeIds& ids) const;
    // Of the clock of all stamps; none where the file states none.
    std::optional<double> ticksPerSecond() const { return mTicksPerSecond; }

private:
    std::map<NodeIds, std::string> mNames;
    std::optional<double> mTicksPerSecond;
};

}  // namespace vdrdump
