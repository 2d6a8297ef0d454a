// The registry calls on top of the settings file, and the file on disk.
#include <gtest/gtest.h>

#include <chrono>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

#include "child_process.h"
#include "platform/portable/registry_store.h"
#include "platform/system.h"
#include "registry_values.h"
#include "settings_folder.h"
#include "support/process_state.h"

namespace kxstr::platform {
namespace {

using namespace kxstr::test;
namespace fs = std::filesystem;

class Registry : public ::testing::Test {
  protected:
    Registry() { use(folder_.file()); }
    static void use(const std::string &path, const System &system = kWestern) { run_on(system, path.c_str()); }
    std::size_t files_in_folder() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.path()), {}));
    }

    SettingsFolder folder_;
};

TEST_F(Registry, WhatTheFormatCannotHoldIsRefused) {
    KeyHandle bad{};
    bool created = false;
    EXPECT_EQ(create_key(kCurrentUser, "a\nb", kReadAndWrite, bad, created), kBadParameter);
    EXPECT_EQ(create_key(kCurrentUser, std::string(256, 'x').c_str(), kReadAndWrite, bad, created), kBadParameter);
    EXPECT_EQ(set_value(kCurrentUser, "v", 3, nullptr, 1), kBadParameter);
}

TEST_F(Registry, TwoBytesUnderAStringTypeGoOutAsTheyAre) {
    folder_.write("[HKEY_CURRENT_USER]\n\"n\"=hex(1):e4,04\n");
    EXPECT_EQ(get("n"), "\xE4\x04");
}

TEST_F(Registry, EveryRootIsThereAndApart) {
    for (std::uint32_t number = 0x80000000; number <= 0x80000006; ++number)
        EXPECT_EQ(set_bytes("v", std::to_string(number), root_key(number)), kSuccess);
    for (std::uint32_t number = 0x80000000; number <= 0x80000006; ++number)
        EXPECT_EQ(get("v", root_key(number)), std::to_string(number));
}

TEST_F(Registry, StatusesOfFilesThatAreNone) {
    KeyHandle key{};
    bool created = false;
    const auto all_report = [&](std::uint32_t status) {
        EXPECT_EQ(open_key(kCurrentUser, "", kReadAndWrite, key), status);
        EXPECT_EQ(create_key(kCurrentUser, "K", kReadAndWrite, key, created), status);
        EXPECT_EQ(get("v"), "status " + std::to_string(status));
        EXPECT_EQ(set_bytes("v", "x"), status);
    };
    write_bytes(folder_.file(), "Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\K");
    const std::string damaged = folder_.read();
    all_report(kDamaged);
    EXPECT_EQ(folder_.read(), damaged);
    EXPECT_EQ(files_in_folder(), 1u);

    use("");
    all_report(kNotFound);
    use(folder_.path().string());
    all_report(kAccessDenied);

    const std::string pipe = (folder_.path() / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    use(pipe);
    all_report(kDamaged); // and does not wait for a writer

    const fs::path loop = folder_.path() / "loop";
    fs::create_symlink(loop, loop);
    use(loop.string());
    all_report(kNoResources);
}

TEST_F(Registry, FirstWriteMakesFolderAndFileForTheUserAlone) {
    const fs::path file = folder_.path() / "a" / "b" / "settings.reg";
    use(file.string());
    EXPECT_EQ(get("v"), "status 2");
    EXPECT_FALSE(fs::exists(folder_.path() / "a")) << "reading makes nothing";
    const mode_t mask = ::umask(0);
    EXPECT_EQ(set_bytes("v", "x"), kSuccess);
    ::umask(mask);
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777u, 0600u);
    for (const fs::path &folder : {file.parent_path(), file.parent_path().parent_path()}) {
        ASSERT_EQ(::stat(folder.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777u, 0700u);
    }
}

TEST_F(Registry, WritesFollowLinksAndKeepPermissions) {
    const fs::path home = folder_.path() / "home";
    fs::create_directories(home);
    const fs::path target = home / "real.reg";
    const fs::path link = folder_.path() / "link.reg";
    fs::create_symlink("home/second.reg", link);
    fs::create_symlink("real.reg", home / "second.reg");
    use(link.string());
    ASSERT_EQ(set_bytes("v", "x"), kSuccess) << "a link to a file that is not there yet";
    ASSERT_TRUE(fs::is_regular_file(fs::symlink_status(target)));
    ASSERT_EQ(::chmod(target.c_str(), 0604), 0);
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(target.c_str(), 1234, 2345), 0);
    }
    ASSERT_EQ(set_bytes("v", "y"), kSuccess);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(fs::is_symlink(home / "second.reg"));
    struct stat info {};
    ASSERT_EQ(::stat(target.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777u, 0604u);
    if (::geteuid() == 0) {
        EXPECT_EQ(info.st_uid, 1234u);
        EXPECT_EQ(info.st_gid, 2345u);
    }
    EXPECT_EQ(get("v"), "y");
    EXPECT_EQ(std::distance(fs::directory_iterator(home), {}), 2) << "nothing else is left behind";
}

TEST_F(Registry, AnUnchangedFileIsNotParsedAgainAndAChangeIsSeenAtOnce) {
    folder_.write("[HKEY_CURRENT_USER]\n\"v\"=\"0\"\n");
    EXPECT_EQ(get("v").substr(0, 1), "0");
    std::size_t parsed = registry_parse_count();
    for (int i = 0; i < 100; ++i)
        get("v");
    EXPECT_EQ(registry_parse_count(), parsed);
    // Same size, same file, and often the same tick of the clock.
    for (int i = 0; i < 300; ++i) {
        const std::string digit(1, static_cast<char>('0' + i % 10));
        folder_.write("[HKEY_CURRENT_USER]\n\"v\"=\"" + digit + "\"\n");
        ASSERT_EQ(get("v").substr(0, 1), digit);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(60)); // now the file's times tell enough
    get("v");
    parsed = registry_parse_count();
    get("v");
    EXPECT_EQ(registry_parse_count(), parsed);
    EXPECT_EQ(in_child([] { return static_cast<int>(set_bytes("v", "other")); }), 0);
    EXPECT_EQ(get("v"), "other");
    fs::remove(folder_.file());
    EXPECT_EQ(get("v"), "status 2");
}

TEST_F(Registry, ReadOnlyFolder) {
    folder_.write("[HKEY_CURRENT_USER\\K]\n\"v\"=\"x\"\n");
    const std::string before = folder_.read();
    fs::permissions(folder_.path(), fs::perms{0555});
    const auto denied = [&] {
        if (!become_nobody()) return 1;
        KeyHandle key{};
        bool created = true;
        if (create_key(kCurrentUser, "K", kReadAndWrite, key, created) != kSuccess) return 2; // it is there
        if (set_bytes("v", "y", key) != kAccessDenied) return 3;
        if (create_key(kCurrentUser, "New", kReadAndWrite, key, created) != kAccessDenied || created) return 4;
        run_on(kWestern, (folder_.path() / "missing" / "file.reg").c_str());
        if (create_key(kCurrentUser, "K", kReadAndWrite, key, created) != kAccessDenied) return 5;
        return get("v") == "status 2" ? 0 : 6;
    };
    EXPECT_EQ(in_child(denied), 0);
    EXPECT_EQ(folder_.read(), before);
    EXPECT_EQ(files_in_folder(), 1u);

    fs::permissions(folder_.path(), fs::perms{0777});
    fs::permissions(folder_.file(), fs::perms{0444});
    const auto read_only_file = [] { return become_nobody() && set_bytes("v", "y") == kAccessDenied ? 0 : 1; };
    EXPECT_EQ(in_child(read_only_file), 0) << "a folder that allows it is no reason to replace a read-only file";
    EXPECT_EQ(folder_.read(), before);
    EXPECT_EQ(files_in_folder(), 1u);
}

TEST_F(Registry, FullDisk) {
    ASSERT_EQ(set_bytes("v", "old"), kSuccess);
    const std::string before = folder_.read();
    const auto limited = [&] {
        const rlimit limit{before.size() + 100, RLIM_INFINITY};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
        if (set_bytes("v", std::string(1000, 'x')) != kDiskFull) return 2;
        return set_bytes("w", "fits") == kSuccess ? 0 : 3;
    };
    EXPECT_EQ(in_child(limited), 0);
    EXPECT_EQ(get("v"), "old");
    EXPECT_EQ(get("w"), "fits");
    EXPECT_EQ(files_in_folder(), 1u);
}

TEST_F(Registry, FullDiskOfItsOwn) {
    constexpr int kNoMount = 77;
    const std::string disk = (folder_.path() / "disk").string();
    fs::create_directory(disk);
    const auto fill = [&] {
        if (::unshare(CLONE_NEWNS) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return kNoMount;
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
        if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=128k") != 0) return kNoMount;
        use(disk + "/registry.reg");
        if (set_bytes("v", "old") != kSuccess) return 1;
        const std::string before = bytes_of(disk + "/registry.reg");
        int written = 0; // grow until the disk holds the old file but not the new one beside it
        for (std::uint32_t status = kSuccess; status == kSuccess; ++written) {
            status = set_bytes(("big" + std::to_string(written)).c_str(), std::string(2000, 'x'));
            if (status != kSuccess && status != kDiskFull) return 2;
            if (written > 100) return 3;
        }
        if (get("v") != "old" || get("big0").size() != 2000) return 4;
        if (get(("big" + std::to_string(written - 1)).c_str()) != "status 2") return 5;
        return std::distance(fs::directory_iterator(disk), {}) == 1 ? 0 : 6;
    };
    const int result = in_child(fill);
    if (result == kNoMount) GTEST_SKIP() << "this system lets us mount no file system of our own";
    EXPECT_EQ(result, 0);
}

TEST_F(Registry, ALeftoverOfAKilledWriterIsNoObstacle) {
    write_bytes(folder_.path() / ".registry.reg.new", "half a fi");
    EXPECT_EQ(set_bytes("v", "x"), kSuccess);
    EXPECT_EQ(get("v"), "x");
    EXPECT_EQ(files_in_folder(), 1u);
}

TEST_F(Registry, ThreadsWriteAndReadAtOnce) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 10; ++i) {
                const std::string name = std::to_string(t) + "." + std::to_string(i);
                EXPECT_EQ(set_bytes(name.c_str(), name), kSuccess);
                EXPECT_EQ(get(name.c_str()), name);
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    for (int t = 0; t < 4; ++t)
        EXPECT_EQ(get((std::to_string(t) + ".0").c_str()), std::to_string(t) + ".0");
}

} // namespace
} // namespace kxstr::platform
