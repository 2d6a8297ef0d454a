// The registry of this process and all others: the settings file, read when it has changed.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/portable/registry_file.h"
#include "platform/system.h"

namespace kxstr::platform {

// The functions return a RegistryStatus; they may be called from several threads at once.

// The registry as it is now. A missing file is an empty registry. kNotFound when the settings name no file, kDamaged
// when it cannot be parsed.
std::uint32_t read_registry(std::shared_ptr<const RegistryFile> &registry);

// Reads, changes and writes, with no other process in between. `change` returns the new text, or a status to leave the
// file as it is.
struct RegistryChange {
    std::uint32_t status;
    std::string text;
};
std::uint32_t change_registry(const std::function<RegistryChange(const RegistryFile &)> &change,
                              WhenLocked when_locked = WhenLocked::waits);

// How often a file was parsed for reading; for tests.
std::size_t registry_parse_count() noexcept;

} // namespace kxstr::platform
