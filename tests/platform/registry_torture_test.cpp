// Several processes at one settings file, and processes that die while they write. `make torture` sets KXSTR_TORTURE
// and gets the long form.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "child_process.h"
#include "platform/portable/registry_store.h"
#include "platform/system.h"
#include "settings_folder.h"
#include "support/process_state.h"

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
    std::uint32_t number = 0;
    std::uint32_t type = 0;
    std::uint32_t size = sizeof number;
    const std::uint32_t status = query_value(kCurrentUser, name.c_str(), &type, &number, size);
    if (status != kSuccess || type != 4 || size != sizeof number) return std::nullopt;
    return number;
}

std::string value_name(int process, int write) {
    return std::to_string(process).append(".").append(std::to_string(write));
}

constexpr std::string_view kRemarks = "; kept\n[HKEY_USERS\\Kept]\n; \"v\"=\n\"v\" = hex:0 , 1 ; kept too\n";

TEST(RegistryTorture, SeveralProcessesWriteAtOnce) {
    const int processes = 8;
    const int writes = long_form() ? 200 : 12;
    const SettingsFolder folder;
    folder.write(kRemarks);
    run_on(kWestern, folder.file().c_str());
    std::vector<pid_t> children;
    children.reserve(static_cast<std::size_t>(processes));
    for (int p = 0; p < processes; ++p) {
        children.push_back(start_child([=] {
            for (int i = 0; i < writes; ++i) {
                const auto number = static_cast<std::uint32_t>(i);
                if (set_number(value_name(p, i), number) != kSuccess) return 1;
                if (set_number(value_name(p, -1), number) != kSuccess) return 2;
            }
            return 0;
        }));
    }
    for (const pid_t child : children)
        EXPECT_EQ(wait_for_child(child), 0);
    for (int p = 0; p < processes; ++p) {
        for (int i = 0; i < writes; ++i)
            EXPECT_EQ(get_number(value_name(p, i)), i);
        EXPECT_EQ(get_number(value_name(p, -1)), writes - 1);
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
