# Warnings for the project's own targets (third-party headers are system includes).
add_library(lanmira_warnings INTERFACE)
target_compile_options(lanmira_warnings INTERFACE
    $<$<COMPILE_LANG_AND_ID:CXX,GNU,Clang>:-Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wpedantic>)
