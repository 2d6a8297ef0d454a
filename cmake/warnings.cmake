# The warnings that our own targets are held to; a consumer of the library sees none of this.
add_library(kxstr_warnings INTERFACE)
target_compile_options(kxstr_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(KXSTR_WERROR)
    target_compile_options(kxstr_warnings INTERFACE -Werror)
endif()
