# LANMIRA_SANITIZE="address;undefined" builds everything with those sanitizers.
if(LANMIRA_SANITIZE)
    list(JOIN LANMIRA_SANITIZE "," _lanmira_sanitizers)
    add_compile_options(-fsanitize=${_lanmira_sanitizers} -fno-omit-frame-pointer
                        -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=${_lanmira_sanitizers})
endif()
