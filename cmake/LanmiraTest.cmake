# lanmira_add_test(NAME name SOURCES ... LIBS ... [LABELS ...] [LAUNCHER cmd ...] [GUI])
# One GoogleTest executable registered with CTest as a single test. GUI tests run on the
# offscreen platform so they need no display. LAUNCHER runs the test through a command,
# e.g. dbus-run-session -- for a private session bus.
include(GoogleTest)
find_package(GTest REQUIRED)

function(lanmira_add_test)
    cmake_parse_arguments(T "GUI" "NAME;TIMEOUT" "SOURCES;LIBS;LABELS;LAUNCHER" ${ARGN})
    add_executable(${T_NAME} ${T_SOURCES})
    target_link_libraries(${T_NAME} PRIVATE ${T_LIBS} GTest::gtest GTest::gmock lanmira_warnings)
    if(T_GUI)
        target_sources(${T_NAME} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/qt_gtest_main.cpp)
        target_link_libraries(${T_NAME} PRIVATE Qt6::Widgets)
    else()
        target_link_libraries(${T_NAME} PRIVATE GTest::gtest_main)
    endif()
    target_compile_definitions(${T_NAME} PRIVATE
        LANMIRA_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        LANMIRA_BUILD_DIR="${PROJECT_BINARY_DIR}")
    set_target_properties(${T_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
    if(NOT T_TIMEOUT)
        set(T_TIMEOUT 120)
    endif()
    add_test(NAME ${T_NAME} COMMAND ${T_LAUNCHER} $<TARGET_FILE:${T_NAME}> --gtest_brief=1)
    set(_env "QT_QPA_PLATFORM=offscreen" "LANMIRA_BUILD_DIR=${PROJECT_BINARY_DIR}" ${LANMIRA_SANITIZER_TEST_ENV})
    set_tests_properties(${T_NAME} PROPERTIES TIMEOUT ${T_TIMEOUT} LABELS "${T_LABELS}"
                         ENVIRONMENT "${_env}")
endfunction()
