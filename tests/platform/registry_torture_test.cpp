// Several processes at one settings file, and processes that die while they write. `make torture` sets KXSTR_TORTURE
// and gets the long form.

#include <chrono>
#include <csignal>
#include <thread>

#include "child_process.h"
#include "platform/portable/registry_store.h"
#include "platform/system.h"
#include "settings_folder.h"
#include "support/test.h"

namespace kxstr::platform {
namespace {

using namespace kxstr::test;

bool long_form() {
    return std::getenv("KXSTR_TORTURE") != nullptr;
}

std::uint32_t set_number(const std::string &name, std::uint32_t number) {
    return set_value(kCurrentUser, name.c_str(), 4, &number, sizeof number);
}

// Nothing when the value is not there or not what set_number writes.
std::optional<std::uint32_t> get_number(const std::string &name) {
    std::uint32_t number = 0, type = 0, size = sizeof number;
    const std::uint32_t status = query_value(kCurrentUser, name.c_str(), &type, &number, size);
    if (status != kSuccess || type != 4 || size != sizeof number) return std::nullopt;
    return number;
}

constexpr std::string_view kRemarks = "; kept\n[HKEY_USERS\\Kept]\n; \"v\"=\n\"v\" = hex:0 , 1 ; kept too\n";

TEST(RegistryTorture, ProcessesAndTheirThreadsWriteAtOnce) {
    const std::uint32_t writes = long_form() ? 200 : 12;
    const std::string names[] = {"a", "b", "c", "d"};
    const SettingsFolder folder;
    folder.write(kRemarks);
    run_on(kWestern, folder.file().c_str());
    // Values of its own, and one that it changes each time.
    const auto write = [writes](const std::string &name) {
        for (std::uint32_t i = 0; i < writes; ++i) {
            EXPECT_EQ(set_number(name + std::to_string(i), i), kSuccess);
            EXPECT_EQ(set_number(name, i), kSuccess);
            EXPECT_EQ(get_number(name), i);
        }
    };
    std::vector<pid_t> children;
    for (const std::string &name : names) {
        children.push_back(start_child([&] {
            std::thread other(write, name + "'s thread");
            write(name);
            other.join();
            return testing::Test::HasFailure() ? 1 : 0;
        }));
    }
    for (const pid_t child : children)
        EXPECT_EQ(wait_for_child(child), 0);
    for (const std::string &name : names) {
        for (std::uint32_t i = 0; i < writes; ++i) {
            EXPECT_EQ(get_number(name + std::to_string(i)), i);
            EXPECT_EQ(get_number(name + "'s thread" + std::to_string(i)), i);
        }
    }
    EXPECT_TRUE(folder.read().starts_with(std::string(SettingsFolder::kHeader).append(kRemarks)));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(RegistryTorture, KilledAtAnyMomentTheFileHoldsTheOldOrTheNewState) {
    const int kills = long_form() ? 200 : 25;
    const SettingsFolder folder;
    folder.write(kRemarks);
    run_on(kWestern, folder.file().c_str());
    ASSERT_EQ(set_number("n", 0), kSuccess);
    std::mt19937 random(5);
    std::uint32_t written = 0; // by the last process that said so
    int in_the_middle = 0;     // kills that left a temporary file
    for (int kill = 0; kill < kills; ++kill) {
        int report[2];
        ASSERT_EQ(::pipe(report), 0);
        const pid_t child = start_child([&] {
            for (std::uint32_t n = written + 1;; ++n) {
                if (set_number("n", n) != kSuccess) return 1;
                if (::write(report[1], &n, sizeof n) != sizeof n) return 2;
            }
        });
        ::close(report[1]);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30000));
        ::kill(child, SIGKILL);
        EXPECT_EQ(wait_for_child(child), -SIGKILL);
        for (std::uint32_t n = 0; ::read(report[0], &n, sizeof n) == sizeof n;)
            written = n;
        ::close(report[0]);
        in_the_middle += std::filesystem::exists(folder.path() / ".registry.reg.new") ? 1 : 0;

        const auto number = get_number("n");
        ASSERT_TRUE(number) << "after " << kill << " kills the file no longer parses:\n" << folder.read();
        ASSERT_TRUE(*number == written || *number == written + 1) << *number << " after " << written;
        written = *number;
        ASSERT_TRUE(folder.read().starts_with(std::string(SettingsFolder::kHeader).append(kRemarks)));
    }
    EXPECT_GT(in_the_middle, 0) << "no process died within a write: this test has seen nothing";
    EXPECT_EQ(set_number("n", 0), kSuccess) << "the dead let go of the lock";
}

} // namespace
} // namespace kxstr::platform
