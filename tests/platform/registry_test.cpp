// The registry calls on top of the settings file, and the file on disk.

#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>

#include <kxstr/codepage.h>
#include <kxstr/core.h>

#include "child_process.h"
#include "platform/portable/registry_store.h"
#include "platform/system.h"
#include "registry_values.h"
#include "settings_folder.h"
#include "support/test.h"

namespace {
int folder_flush_error = 0, file_flush_error = 0; // what flushing comes to
}

// In the place of the C library's.
extern "C" int fsync(int file) {
    struct stat info {};
    if (::fstat(file, &info) != 0) return -1;
    errno = S_ISDIR(info.st_mode) ? folder_flush_error : file_flush_error;
    if (errno != 0) return -1;
    return static_cast<int>(::syscall(SYS_fsync, file));
}

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

    static struct stat status_of(const fs::path &path) {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0);
        return status;
    }

    SettingsFolder folder_;
};

TEST_F(Registry, NamesHaveTheirLimits) {
    KeyHandle key{};
    bool created = false;
    const std::string component(255, 'x'), name(16383, 'v');
    EXPECT_EQ(create_key(kCurrentUser, "a\nb", kReadAndWrite, key, created), kBadParameter);
    EXPECT_EQ(create_key(kCurrentUser, (component + "x").c_str(), kReadAndWrite, key, created), kBadParameter);
    EXPECT_EQ(create_key(kCurrentUser, (component + "\\" + component).c_str(), kReadAndWrite, key, created), kSuccess);
    EXPECT_EQ(set_bytes(name.c_str(), "x"), kSuccess);
    EXPECT_EQ(set_bytes((name + "v").c_str(), "x"), kBadParameter);
    EXPECT_EQ(set_value(kCurrentUser, "v", 3, nullptr, 1), kBadParameter);
    close_key(key);
}

TEST_F(Registry, TwoBytesUnderAStringTypeGoOutAsTheyAre) {
    folder_.write("[HKEY_CURRENT_USER]\n\"n\"=hex(1):e4,04\n\"empty\"=\"\"\n\"list\"=hex(7):e9,00,41,00\n"
                  "\"path\"=hex(2):e9,00,41,00\n");
    EXPECT_EQ(get("n"), "\xE4\x04");
    EXPECT_EQ(get("empty"), std::string(1, '\0')) << "but for a terminator alone";
    EXPECT_EQ(get("path"), get("list"));
    EXPECT_EQ(get("list"), "\xE9"
                           "A");
}

TEST_F(Registry, NoOtherByteStandsForACharacterThatTheCodePageLacks) {
    folder_.write("[HKEY_CURRENT_USER]\n\"v\"=\"\xC3\xA9\"\n");
    use(folder_.file(), kRussian);
    EXPECT_EQ(get("v"), std::string("?\0", 2));
}

TEST_F(Registry, EveryRootIsThereAndApart) {
    for (std::uint32_t number = 0x80000000; number <= 0x80000006; ++number) {
        EXPECT_EQ(get("v", root_key(number)), "status 2");
        EXPECT_EQ(set_bytes("v", "x", root_key(number)), kSuccess);
    }
}

TEST_F(Registry, StatusesOfFilesThatAreNone) {
    const fs::path pipe = folder_.path() / "pipe", loop = folder_.path() / "loop";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    fs::create_symlink(loop, loop);
    const std::string damaged = "Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\K";
    write_bytes(folder_.file(), damaged);
    const struct {
        std::string path;
        std::uint32_t status;
    } cases[] = {
        {folder_.file(), 1009}, {"", 2}, {folder_.path(), 5}, // the numbers that hosts see
        {pipe, 1009},                                         // and does not wait for a writer
        {loop, 1450},
    };
    for (const auto &c : cases) {
        use(c.path);
        KeyHandle key{};
        bool created = false;
        EXPECT_EQ(open_key(kCurrentUser, "", kReadAndWrite, key), c.status) << c.path;
        EXPECT_EQ(create_key(kCurrentUser, "K", kReadAndWrite, key, created), c.status) << c.path;
        EXPECT_EQ(get("v"), "status " + std::to_string(c.status)) << c.path;
        EXPECT_EQ(set_bytes("v", "x"), c.status) << c.path;
    }
    EXPECT_EQ(folder_.read(), damaged);
    EXPECT_EQ(files_in_folder(), 3u);
}

TEST_F(Registry, FirstWriteMakesFolderAndFileForTheUserAlone) {
    const fs::path file = folder_.path() / "a" / "b" / "settings.reg";
    use(file.string());
    EXPECT_EQ(get("v"), "status 2");
    EXPECT_FALSE(fs::exists(folder_.path() / "a")) << "reading makes nothing";
    const mode_t mask = ::umask(0);
    EXPECT_EQ(set_bytes("v", "x"), kSuccess);
    ::umask(mask);
    EXPECT_EQ(status_of(file).st_mode & 07777u, 0600u);
    EXPECT_EQ(status_of(file.parent_path()).st_mode & 07777u, 0700u);
    EXPECT_EQ(status_of(file.parent_path().parent_path()).st_mode & 07777u, 0700u);
}

TEST_F(Registry, WritesFollowLinksAndKeepPermissions) {
    const fs::path home = folder_.path() / "home", target = home / "real.reg", link = folder_.path() / "link.reg";
    fs::create_directories(home);
    fs::create_symlink("home/second.reg", link);
    fs::create_symlink("real.reg", home / "second.reg");
    use(link.string());
    ASSERT_EQ(set_bytes("v", "x"), kSuccess) << "a link to a file that is not there yet";
    ASSERT_EQ(::chmod(target.c_str(), 0604), 0);
    const bool may_give_away = ::geteuid() == 0 && ::chown(target.c_str(), 1234, 2345) == 0;
    ASSERT_EQ(set_bytes("v", "y"), kSuccess);
    EXPECT_EQ(get("v"), "y");
    EXPECT_TRUE(fs::is_symlink(link) && fs::is_symlink(home / "second.reg"));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(target)));
    EXPECT_EQ(status_of(target).st_mode & 07777u, 0604u);
    if (may_give_away) {
        EXPECT_EQ(status_of(target).st_uid, 1234u);
        EXPECT_EQ(status_of(target).st_gid, 2345u);
    }
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

TEST_F(Registry, FoldersThatCannotBeFlushedAreNoFailure) {
    for (const int error : {EIO, EINVAL}) {
        use((folder_.path() / std::to_string(error) / "below" / "file.reg").string());
        folder_flush_error = error;
        EXPECT_EQ(set_bytes("v", "x"), kSuccess) << "the folders and the file are there";
        EXPECT_EQ(set_bytes("v", "y"), kSuccess) << "the new value is in the file";
        folder_flush_error = 0;
        EXPECT_EQ(get("v"), "y");
    }
    const fs::path closed = folder_.path() / "closed";
    fs::create_directory(closed);
    fs::permissions(folder_.path(), fs::perms{0755});
    fs::permissions(closed, fs::perms{0333});
    use((closed / "new" / "file.reg").string());
    EXPECT_EQ(in_child([] { return become_nobody() && set_bytes("v", "x") == kSuccess ? 0 : 1; }), 0)
        << "a folder in which one may make others but not look";
    EXPECT_EQ(get("v"), "x");
}

TEST_F(Registry, AUserKeepsTheModeOfAFile) {
    fs::permissions(folder_.path(), fs::perms{0777});
    const auto keeps = [&] {
        if (!become_nobody() || set_bytes("v", "x") != kSuccess) return 1;
        if (::chmod(folder_.file().c_str(), 02750) != 0 || set_bytes("v", "y") != kSuccess) return 2;
        return (status_of(folder_.file()).st_mode & 07777) == 02750 ? 0 : 3;
    };
    EXPECT_EQ(in_child(keeps), 0);
}

TEST_F(Registry, ReadingDoesNotWaitForAWriter) {
    const std::string link = "[HKEY_CURRENT_USER\\Software\\Norvane\\Conversions\\21\\CodePageData\\FR]\n"
                             "\"DOS Code Page\"=hex(80000008):3c,00,76,00,3e,00\n[HKEY_CURRENT_USER\\Software]\n"
                             "\"v\"=hex:54,03\n";
    folder_.write(link);
    const std::string before = folder_.read();
    const int lock = ::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(::flock(lock, LOCK_EX), 0);
    const auto start = std::chrono::steady_clock::now();
    VaskSetLanguage("EN");
    EXPECT_EQ(WcvtGetDOSCodepage(), 437) << "its key stays missing";
    VaskSetLanguage("FR");
    EXPECT_EQ(WcvtGetDOSCodepage(), 852) << "the link engine's keys, too";
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(folder_.read(), before);
    ::close(lock);
    VaskSetLanguage("EN");
    EXPECT_EQ(WcvtGetDOSCodepage(), 437);
    EXPECT_NE(folder_.read().find("CodePageData\\EN]\n"), std::string::npos);
}

TEST_F(Registry, FullDisk) {
    ASSERT_EQ(set_bytes("v", "old"), kSuccess);
    const rlimit limit{folder_.read().size() + 100, RLIM_INFINITY};
    const auto limited = [&] {
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
        if (set_bytes("v", std::string(1000, 'x')) != kDiskFull) return 2;
        return set_bytes("w", "fits") == kSuccess ? 0 : 3;
    };
    EXPECT_EQ(in_child(limited), 0);
    file_flush_error = ENOSPC; // as some file systems tell it
    EXPECT_EQ(set_bytes("v", "new"), 112u);
    file_flush_error = 0;
    EXPECT_EQ(get("v"), "old");
    EXPECT_EQ(get("w"), "fits");
    EXPECT_EQ(files_in_folder(), 1u);
}

TEST_F(Registry, ALeftoverOfAKilledWriterIsNoObstacle) {
    write_bytes(folder_.path() / ".registry.reg.new", "half a fi");
    EXPECT_EQ(set_bytes("v", "x"), kSuccess);
    EXPECT_EQ(get("v"), "x");
    EXPECT_EQ(files_in_folder(), 1u);
}

} // namespace
} // namespace kxstr::platform
