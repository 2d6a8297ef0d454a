# Build for browsers with Debian's emscripten. Its own C++ headers are those of libc++ 13, which knows no range
# algorithms; the headers of libc++ 16 go with the same library inside, for what they take from it has not changed.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
set(CMAKE_CXX_FLAGS_INIT
    "-nostdinc++ -isystem ${CMAKE_CURRENT_LIST_DIR}/wasm -isystem /usr/lib/llvm-16/include/wasm32-wasi/c++/v1")
