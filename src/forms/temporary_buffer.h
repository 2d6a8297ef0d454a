// A buffer for the length of one call.
#pragma once

#include <cstddef>

#include "platform/system.h"

namespace kxstr::forms {

// Plain units from the process heap, not cleared. Getting none is no exception: get() is null then.
template <class Unit> class TemporaryBuffer {
  public:
    explicit TemporaryBuffer(std::size_t units) noexcept
        : units_(static_cast<Unit *>(platform::heap_allocate(units * sizeof(Unit)))) {}
    ~TemporaryBuffer() { platform::heap_free(units_); }
    TemporaryBuffer(const TemporaryBuffer &) = delete;
    TemporaryBuffer &operator=(const TemporaryBuffer &) = delete;

    Unit *get() const noexcept { return units_; }

  private:
    Unit *units_;
};

} // namespace kxstr::forms
