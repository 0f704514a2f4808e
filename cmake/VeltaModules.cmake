# One static library per folder of src/, one test executable per class, one benchmark per subject.

# CMake 3.25 with Ninja looks for Q_OBJECT in no header that has come since the last build, as long
# as the former ones stay as they are. When the list of sources has changed it is made to look anew.
function(velta_renew_autogen target sources)
    set(former "")
    set(list "${CMAKE_CURRENT_BINARY_DIR}/${target}_sources.txt")
    if(EXISTS "${list}")
        file(READ "${list}" former)
    endif()
    if(NOT former STREQUAL sources)
        file(REMOVE "${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/timestamp")
        file(WRITE "${list}" "${sources}")
    endif()
endfunction()

# velta_module(<folder> USES <targets>...): every source of this folder becomes velta::<folder>.
function(velta_module name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "USES")
    file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    add_library(velta_${name} STATIC ${sources})
    add_library(velta::${name} ALIAS velta_${name})
    target_include_directories(velta_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
    target_compile_definitions(velta_${name} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH)
    target_link_libraries(velta_${name} PUBLIC velta::flags ${ARG_USES})
    velta_renew_autogen(velta_${name} "${sources}")
    set_property(GLOBAL APPEND PROPERTY VELTA_MODULES velta::${name})
endfunction()

# velta_test(<NameTest> [CASE <case>] [ONCE] USES <targets>...): NameTest.cpp of this folder as CTest
# case <folder>.<NameTest>, or <folder>.<case>. Tests see neither the user's folders nor a display.
# Unless it is ONCE, the test runs a second time as <case>.es_AR: where numbers have a decimal comma
# and windows are scaled by half as much again.
function(velta_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "ONCE" "CASE" "USES")
    get_filename_component(folder "${CMAKE_CURRENT_SOURCE_DIR}" NAME)
    set(case "${folder}.${name}")
    if(ARG_CASE)
        set(case "${folder}.${ARG_CASE}")
    endif()
    add_executable(${name} "${name}.cpp")
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${name} PRIVATE velta::flags Qt6::Test ${ARG_USES})
    set(results "${PROJECT_BINARY_DIR}/test-results")
    set(home "${PROJECT_BINARY_DIR}/test-home")
    file(MAKE_DIRECTORY "${results}/es_AR" "${home}/run")
    file(CHMOD "${home}/run" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set(environment "QT_QPA_PLATFORM=offscreen;HOME=${home};XDG_RUNTIME_DIR=${home}/run")
    add_test(NAME ${case} COMMAND ${name} -o "${results}/${case}.xml,junitxml" -o "-,txt")
    set_tests_properties(${case} PROPERTIES ENVIRONMENT "${environment}")
    if(ARG_ONCE)
        return()
    endif()
    add_test(NAME ${case}.es_AR
        COMMAND ${name} -o "${results}/es_AR/${case}.xml,junitxml" -o "-,txt")
    set_tests_properties(${case}.es_AR PROPERTIES ENVIRONMENT
        "${environment};LOCPATH=${VELTA_TEST_LOCALES};LC_ALL=es_AR.UTF-8;QT_SCALE_FACTOR=1.5")
endfunction()

# velta_bench(<name> USES <targets>...): bench/<name>.cpp with Google Benchmark.
function(velta_bench name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "USES")
    add_executable(${name} "${name}.cpp")
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/bench" "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${name} PRIVATE velta::flags benchmark::benchmark ${ARG_USES})
    add_dependencies(${name} stage_resources)
endfunction()
