# Our own code compiles without a warning; system headers are not ours and stay silent.
add_library(ZuWarnings INTERFACE)
target_compile_options(ZuWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Werror
    # No path of the machine that builds gets into a log line or a binary.
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
)
# A thread-safety finding of the clang build is an error through -Werror; GCC does not know the analysis.
