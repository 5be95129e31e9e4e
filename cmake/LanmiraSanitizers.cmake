# LANMIRA_SANITIZE="address;undefined" builds everything with those sanitizers.
if(LANMIRA_SANITIZE)
    list(JOIN LANMIRA_SANITIZE "," _lanmira_sanitizers)
    add_compile_options(-fsanitize=${_lanmira_sanitizers} -fno-omit-frame-pointer
                        -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=${_lanmira_sanitizers})
    set(LANMIRA_SANITIZER_TEST_ENV
        "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp"
        "UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1"
        "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
endif()
