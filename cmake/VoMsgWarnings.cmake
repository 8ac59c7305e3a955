# Warnings as errors for our own targets only.
add_library(vomsg_warnings INTERFACE)
target_compile_options(vomsg_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
