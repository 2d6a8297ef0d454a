// What a call writes into a destination, and that it keeps within it.
#pragma once

#include <gtest/gtest.h>

#include "support/guarded.h"

namespace kxstr::test {

// The contents of a destination of `size` units after `write(destination)`. It writes twice: between guards, and into a
// block that ends with the destination, where a sanitizer sees every unit too many.
template <class Unit, class Write> std::vector<Unit> written_by(std::size_t size, Write write) {
    Guarded<Unit> guarded(size);
    write(guarded.data());
    EXPECT_TRUE(guarded.guards_hold()) << "a destination of " << size;
    std::vector<Unit> exact(size, Guarded<Unit>::kUntouched);
    if (size == 0) return exact; // has no address to write to
    write(exact.data());
    EXPECT_EQ(exact, guarded.contents()) << "the same call again";
    return exact;
}

// A zero-terminated text, ending with its block.
template <class Unit> std::vector<Unit> terminated(std::vector<Unit> text) {
    text.push_back(0);
    text.shrink_to_fit();
    return text;
}

} // namespace kxstr::test
