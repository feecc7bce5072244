#include "storage/raid_settings.hpp"

#include <algorithm>
#include <numeric>

#include "foundation/basic_file.hpp"

namespace znp {
namespace {

constexpr const char* path_not_writable_text = "This path is not writable.";

bool all_writable(const std::vector<std::wstring>& paths) {
    return std::all_of(paths.begin(), paths.end(),
                       [](const std::wstring& path) { return path_is_writable(path) == 0; });
}

RaidGroup make_group(RaidMode mode, std::vector<RaidPath> paths) {
    RaidGroup group;
    group.mode = mode;
    group.paths = std::move(paths);
    return group;
}

}  // namespace

u64_t RaidGroup::data_paths() const {
    const u64_t count = paths.size();
    if (mode == RaidMode::raid0 || count == 0) return count;
    return count - 1;
}

bool RaidFileSettings::is_usable() const {
    return !groups.empty() && std::all_of(groups.begin(), groups.end(),
                                          [](const RaidGroup& group) { return group.data_paths() != 0; });
}

u64_t RaidFileSettings::largest_data_paths() const {
    u64_t largest = 0;
    for (const RaidGroup& group : groups) largest = std::max(largest, group.data_paths());
    return largest;
}

void RaidFileSettings::clear() {
    groups.clear();
    buffer_per_file = default_buffer;
    total_buffer = default_buffer;
    group_block = 0;
}

void RaidFileSettings::recompute() {
    const u64_t largest = largest_data_paths();
    if (largest == 0) return;

    // At most lcm(1, ..., 8) sectors before the doubling, so nothing here can overflow.
    group_block = sector_bytes;
    for (const RaidGroup& group : groups) {
        if (group.data_paths() != 0) group_block = std::lcm(group_block, group.data_paths() * sector_bytes);
    }
    while (group_block / largest < min_block_of_path) group_block *= 2;

    total_buffer = 0;
    for (RaidGroup& group : groups) {
        if (group.data_paths() == 0) continue;
        group.file_block = group_block / group.data_paths();
        group.buffer_blocks = std::max<u64_t>(1, buffer_per_file / group.file_block);
        total_buffer += group.paths.size() * group.file_block * group.buffer_blocks;
    }
}

const char* quick_raid0(RaidFileSettings& settings, const std::vector<std::wstring>& paths) {
    if (paths.size() > RaidFileSettings::max_groups) return "There is a limit of 64 paths for RAID0.";
    if (!all_writable(paths)) return path_not_writable_text;

    settings.clear();
    for (const std::wstring& path : paths) {
        settings.groups.push_back(make_group(RaidMode::raid0, {RaidPath{path, 0}}));
    }
    settings.recompute();
    return nullptr;
}

const char* quick_raid3(RaidFileSettings& settings, const std::vector<std::wstring>& paths) {
    if (paths.size() > RaidFileSettings::max_paths_in_group) return "There is a limit of 8 paths for RAID3.";
    if (!all_writable(paths)) return path_not_writable_text;

    std::vector<RaidPath> group_paths;
    for (const std::wstring& path : paths) group_paths.push_back(RaidPath{path, 0});
    settings.clear();
    settings.groups.push_back(make_group(RaidMode::raid3, std::move(group_paths)));
    settings.recompute();
    return nullptr;
}

const char* parse_swap_option(RaidFileSettings& settings, const std::string& mode,
                              const std::vector<std::wstring>& paths) {
    if (mode == "raid0") return quick_raid0(settings, paths);
    if (mode == "raid3") return quick_raid3(settings, paths);
    return "Unrecognized mode";
}

void SwapConfiguration::set_min_io(u64_t bytes) {
    minIO_physical = std::max(bytes, least_min_io);
    // Without a group the default configuration stands in: one group with one path.
    minIO_logical = std::max<u64_t>(1, raid.groups.size()) * minIO_physical *
                    std::max<u64_t>(1, raid.largest_data_paths());
}

const char* SwapConfiguration::set_paths(const std::string& mode, const std::vector<std::wstring>& paths) {
    const char* refusal = parse_swap_option(raid, mode, paths);
    if (refusal == nullptr) set_min_io(minIO_physical);
    return refusal;
}

}  // namespace znp
