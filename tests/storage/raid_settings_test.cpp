#include "storage/raid_settings.hpp"

#include <gtest/gtest.h>

#include "temporary_folder.hpp"

namespace znp {
namespace {

using testing::TemporaryFolder;

const std::wstring nowhere = L"/nonexistent folder/of this test";

std::vector<std::wstring> repeated(upL_t count, const std::wstring& path) {
    return std::vector<std::wstring>(count, path);
}

RaidFileSettings configured(const TemporaryFolder& folder) {
    RaidFileSettings settings;
    EXPECT_EQ(quick_raid0(settings, repeated(3, folder.wide_path())), nullptr);
    return settings;
}

TEST(RaidSettings, StartsWithoutAGroupAndUnusable) {
    const RaidFileSettings settings;
    EXPECT_TRUE(settings.groups.empty());
    EXPECT_FALSE(settings.is_usable());
    EXPECT_EQ(settings.buffer_per_file, 0x4000000u);
    EXPECT_EQ(settings.total_buffer, 0x4000000u);
}

TEST(RaidSettings, QuickRaid0MakesAGroupForEachPath) {
    const TemporaryFolder folder;
    RaidFileSettings settings;
    ASSERT_EQ(quick_raid0(settings, {folder.wide_path(), folder.wide_path() + L"/"}), nullptr);
    ASSERT_EQ(settings.groups.size(), 2u);
    for (const RaidGroup& group : settings.groups) {
        EXPECT_EQ(group.mode, RaidMode::raid0);
        EXPECT_EQ(group.paths.size(), 1u);
        EXPECT_EQ(group.data_paths(), 1u);
        EXPECT_EQ(group.file_block, 0x40000u);
        EXPECT_EQ(group.buffer_blocks, 256u);
    }
    EXPECT_EQ(settings.groups[0].paths[0].path, folder.wide_path());
    EXPECT_EQ(settings.groups[1].paths[0].path, folder.wide_path() + L"/");
    EXPECT_EQ(settings.group_block, 0x40000u);
    EXPECT_EQ(settings.total_buffer, 2u * 0x4000000u);
    EXPECT_TRUE(settings.is_usable());
    EXPECT_TRUE(folder.is_empty());
}

TEST(RaidSettings, QuickRaid0Takes64PathsAndRefuses65WithoutChangingAnything) {
    const TemporaryFolder folder;
    RaidFileSettings settings;
    ASSERT_EQ(quick_raid0(settings, repeated(64, folder.wide_path())), nullptr);
    EXPECT_EQ(settings.groups.size(), 64u);
    EXPECT_STREQ(quick_raid0(settings, repeated(65, folder.wide_path())),
                 "There is a limit of 64 paths for RAID0.");
    EXPECT_EQ(settings.groups.size(), 64u);
}

TEST(RaidSettings, QuickRaid3MakesOneGroupWithAParityPath) {
    const TemporaryFolder folder;
    RaidFileSettings settings;
    ASSERT_EQ(quick_raid3(settings, repeated(4, folder.wide_path())), nullptr);
    ASSERT_EQ(settings.groups.size(), 1u);
    const RaidGroup& group = settings.groups[0];
    EXPECT_EQ(group.mode, RaidMode::raid3);
    EXPECT_EQ(group.data_paths(), 3u);
    // 3 sectors of 4096 bytes, doubled until a path's block is at least 256 KiB.
    EXPECT_EQ(settings.group_block, 3u * 0x40000u);
    EXPECT_EQ(group.file_block, 0x40000u);
    EXPECT_EQ(settings.total_buffer, 4u * 0x4000000u);
}

TEST(RaidSettings, QuickRaid3Takes8PathsAndRefuses9WithoutChangingAnything) {
    const TemporaryFolder folder;
    RaidFileSettings settings = configured(folder);
    EXPECT_STREQ(quick_raid3(settings, repeated(9, folder.wide_path())),
                 "There is a limit of 8 paths for RAID3.");
    EXPECT_EQ(settings.groups.size(), 3u);
    EXPECT_EQ(quick_raid3(settings, repeated(8, folder.wide_path())), nullptr);
    EXPECT_EQ(settings.groups.size(), 1u);
    EXPECT_EQ(settings.groups[0].data_paths(), 7u);
}

TEST(RaidSettings, ASingleRaid3PathMakesTheConfigurationInvalid) {
    const TemporaryFolder folder;
    RaidFileSettings settings;
    ASSERT_EQ(quick_raid3(settings, {folder.wide_path()}), nullptr);
    EXPECT_EQ(settings.groups[0].data_paths(), 0u);
    EXPECT_FALSE(settings.is_usable());
}

TEST(RaidSettings, APathThatCannotBeWrittenIsNeverAdded) {
    const TemporaryFolder folder;
    RaidFileSettings settings = configured(folder);
    EXPECT_STREQ(quick_raid0(settings, {folder.wide_path(), nowhere}), "This path is not writable.");
    EXPECT_STREQ(quick_raid3(settings, {folder.wide_path(), nowhere}), "This path is not writable.");
    EXPECT_EQ(settings.groups.size(), 3u);
}

TEST(RaidSettings, GroupsOfDifferentWidthShareOneBlockSize) {
    RaidFileSettings settings;
    for (const upL_t width : {2u, 3u, 7u}) {
        RaidGroup group;
        group.paths.resize(width);
        settings.groups.push_back(group);
    }
    settings.recompute();
    EXPECT_EQ(settings.group_block % (42u * 4096u), 0u);
    EXPECT_GE(settings.group_block / 7, 0x40000u);
    EXPECT_LT(settings.group_block / 2 / 7, 0x40000u);
    for (const RaidGroup& group : settings.groups) {
        EXPECT_EQ(group.file_block * group.paths.size(), settings.group_block);
        EXPECT_EQ(group.file_block % 4096, 0u);
        EXPECT_EQ(group.buffer_blocks, 0x4000000u / group.file_block);
    }
}

TEST(RaidSettings, ClearRestoresTheDefaults) {
    const TemporaryFolder folder;
    RaidFileSettings settings = configured(folder);
    settings.buffer_per_file = 1;
    settings.clear();
    EXPECT_TRUE(settings.groups.empty());
    EXPECT_EQ(settings.buffer_per_file, 0x4000000u);
    EXPECT_EQ(settings.total_buffer, 0x4000000u);
}

TEST(RaidSettings, OtherModeWordsAreUnrecognized) {
    const TemporaryFolder folder;
    RaidFileSettings settings = configured(folder);
    for (const char* mode : {"", "raid", "raid5", "RAID0", "raid00"}) {
        EXPECT_STREQ(parse_swap_option(settings, mode, {folder.wide_path()}), "Unrecognized mode") << mode;
    }
    EXPECT_EQ(settings.groups.size(), 3u);
    EXPECT_EQ(parse_swap_option(settings, "raid0", {folder.wide_path()}), nullptr);
    EXPECT_EQ(settings.groups.size(), 1u);
}

TEST(SwapConfiguration, MinimumSizeCountsGroupsAndDataPaths) {
    const TemporaryFolder folder;
    SwapConfiguration swap;
    swap.set_min_io(0x100000);
    EXPECT_EQ(swap.minIO_physical, 0x100000u);
    EXPECT_EQ(swap.minIO_logical, 0x100000u);
    ASSERT_EQ(swap.set_paths("raid0", repeated(5, folder.wide_path())), nullptr);
    EXPECT_EQ(swap.minIO_physical, 0x100000u);
    EXPECT_EQ(swap.minIO_logical, 5u * 0x100000u);
    ASSERT_EQ(swap.set_paths("raid3", repeated(4, folder.wide_path())), nullptr);
    EXPECT_EQ(swap.minIO_logical, 3u * 0x100000u);
}

TEST(SwapConfiguration, MinimumSizeIsAtLeastASector) {
    SwapConfiguration swap;
    swap.set_min_io(0);
    EXPECT_EQ(swap.minIO_physical, 4096u);
    swap.set_min_io(4097);
    EXPECT_EQ(swap.minIO_physical, 4097u);
}

}  // namespace
}  // namespace znp
