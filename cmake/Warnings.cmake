# Our own code compiles without a warning; headers of other projects are system headers and stay silent.
add_library(ZuWarnings INTERFACE)
target_compile_options(ZuWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion
    # Log lines and binaries contain no path of the machine that builds.
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
)
if(ZU_WERROR) # this also makes the thread-safety findings of the clang presets errors
    target_compile_options(ZuWarnings INTERFACE -Werror)
endif()
