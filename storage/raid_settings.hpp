// The configuration of swap space: groups of paths, the block sizes that follow from them, and the smallest
// runs of bytes that strided access is planned with. Plain data; nothing here opens a swap file.
//
// The operations that can be refused return a static text, or null if all went well. A refusal changes
// nothing.
#pragma once

#include <string>
#include <vector>

#include "foundation/types.hpp"

namespace znp {

enum class RaidMode : s32_t {
    raid0 = 0,  // no redundancy
    raid3 = 1,  // the last path of the group holds parity
};

struct RaidPath {
    std::wstring path;  // empty: the current directory
    s32_t status = 0;   // errors seen so far; negative: the path has failed
};

struct RaidGroup {
    RaidMode mode = RaidMode::raid0;
    std::vector<RaidPath> paths;
    u32_t failed = 0;         // paths that have failed
    u64_t file_block = 0;     // bytes of one block in one file
    u64_t buffer_blocks = 0;  // blocks in the buffer of one file

    // Paths that hold data. 0: the group cannot be used.
    u64_t data_paths() const;
};

struct RaidFileSettings {
    static constexpr upL_t max_groups = 64;
    static constexpr upL_t max_paths_in_group = 8;
    static constexpr u64_t default_buffer = 0x4000000;
    static constexpr u64_t sector_bytes = 4096;          // what direct transfers are aligned to
    static constexpr u64_t min_block_of_path = 0x40000;  // a smaller block costs more seeks than it is worth

    std::vector<RaidGroup> groups;
    u64_t buffer_per_file = default_buffer;  // wanted bytes of buffer for each file
    u64_t total_buffer = default_buffer;     // bytes of all buffers
    u64_t group_block = 0;                   // bytes of one block of a group, the same for all groups

    // At least one group, and every group can be used.
    bool is_usable() const;
    u64_t largest_data_paths() const;

    void clear();

    // group_block is the least common multiple of a sector on every data path of each group, doubled until
    // the block of a path is at least min_block_of_path; all other sizes follow from it.
    void recompute();
};

// A group for each path: stripes go across the groups. At most 64 paths.
const char* quick_raid0(RaidFileSettings& settings, const std::vector<std::wstring>& paths);

// One group with parity on the last path. At most 8 paths.
const char* quick_raid3(RaidFileSettings& settings, const std::vector<std::wstring>& paths);

// The mode word and the paths of the command line's swap option: "raid0" or "raid3".
const char* parse_swap_option(RaidFileSettings& settings, const std::string& mode,
                              const std::vector<std::wstring>& paths);

// The settings together with the smallest runs of bytes of a strided access.
struct SwapConfiguration {
    static constexpr u64_t default_min_io = 0x40000;
    static constexpr u64_t least_min_io = RaidFileSettings::sector_bytes;

    RaidFileSettings raid;
    u64_t minIO_physical = default_min_io;  // on one path
    u64_t minIO_logical = default_min_io;   // over the whole logical space

    // The size for one path, raised to least_min_io, and the one for all of them that follows from it.
    void set_min_io(u64_t bytes);

    // parse_swap_option; the minimum sizes follow the new groups.
    const char* set_paths(const std::string& mode, const std::vector<std::wstring>& paths);
};

}  // namespace znp
