# One static library per folder of src/, the tests of a folder in few programs, one benchmark per
# subject.

# What Qt's headers cost is paid once for each kind of code, as precompiled headers: code without a
# screen, code with sound, and code with widgets; of each, sources and tests. A build without them
# shows the include that a file lacks.
option(VELTA_PCH "Precompile the headers of Qt and of the standard library" ON)

# Most of what a source costs to compile are headers and what is made of their templates, which sources
# that are compiled at once share. 1 is slower for all, and quicker for who is changing a few.
set(VELTA_AT_ONCE 16 CACHE STRING "How many sources of a library or a program are compiled at once")

# velta_compile_at_once(<target>): has so many sources of a target compiled at once.
function(velta_compile_at_once target)
    if(VELTA_AT_ONCE GREATER 1)
        set_target_properties(${target} PROPERTIES
            UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${VELTA_AT_ONCE})
    endif()
endfunction()

# velta_kind(<result> <targets>...): core, sound or widgets, after what these targets link.
function(velta_kind result)
    set(kind core)
    foreach(used IN LISTS ARGN)
        set(inner core)
        if(used STREQUAL "Qt6::Widgets")
            set(inner widgets)
        elseif(used MATCHES "^Qt6::(Gui|Multimedia)$")
            set(inner sound)
        elseif(used MATCHES "^velta::" AND TARGET ${used})
            get_property(inner GLOBAL PROPERTY VELTA_KIND_${used})
            if(NOT inner)
                get_target_property(linked ${used} INTERFACE_LINK_LIBRARIES)
                velta_kind(inner ${linked})
                set_property(GLOBAL PROPERTY VELTA_KIND_${used} ${inner})
            endif()
        endif()
        if(inner STREQUAL "widgets" OR kind STREQUAL "core")
            set(kind ${inner})
        endif()
    endforeach()
    set(${result} ${kind} PARENT_SCOPE)
endfunction()

set(VELTA_QT_core Qt6::Core Qt6::Network)
set(VELTA_QT_sound ${VELTA_QT_core} Qt6::Gui Qt6::Multimedia)
set(VELTA_QT_widgets ${VELTA_QT_sound} Qt6::Widgets)

set(VELTA_HEADERS_core
    <algorithm> <cmath> <functional> <limits> <memory> <optional>
    <QDir> <QFile> <QJsonArray> <QJsonDocument> <QJsonObject> <QList> <QObject> <QPointer>
    <QString> <QTimer>)
set(VELTA_HEADERS_widgets
    <QApplication> <QComboBox> <QDialog> <QGraphicsView> <QLabel> <QLineEdit> <QMainWindow> <QPainter>
    <QPushButton> <QSpinBox> <QToolButton> <QVBoxLayout>)

# A test is compiled far oftener than its own lines matter for its time: those it tests do.
set(VELTA_TEST_OPTIONS $<$<CONFIG:RelWithDebInfo>:-O0>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # What a test and Qt's headers take, 350 MB, is not worth tidying up while it is compiled: an
    # eighth of the time.
    list(APPEND VELTA_TEST_OPTIONS "SHELL:--param ggc-min-heapsize=1048576")
endif()

# Two hundred tests link the libraries that they test, which GNU ld takes five times as long for.
find_program(VELTA_MOLD mold)
set(VELTA_TEST_LINK_OPTIONS $<$<AND:$<BOOL:${VELTA_MOLD}>,$<CONFIG:RelWithDebInfo>>:-fuse-ld=mold>)

set(VELTA_NO_CASTS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH)

# velta_precompile(<target> <kind> [TEST]): gives a target the precompiled headers of its kind. A
# compiler takes them only where everything is defined as it was for them, so a target links all that
# its kind links.
function(velta_precompile target kind)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "TEST" "" "")
    if(NOT VELTA_PCH)
        return()
    endif()
    set(name velta_${kind}_headers)
    if(ARG_TEST)
        set(name velta_${kind}_test_headers)
    endif()
    if(NOT TARGET ${name})
        file(WRITE "${PROJECT_BINARY_DIR}/${name}.cpp" "")
        add_library(${name} OBJECT "${PROJECT_BINARY_DIR}/${name}.cpp")
        set_target_properties(${name} PROPERTIES AUTOMOC OFF)
        target_link_libraries(${name} PRIVATE velta::flags ${VELTA_QT_${kind}})
        set(headers ${VELTA_HEADERS_core})
        if(kind STREQUAL "widgets")
            list(APPEND headers ${VELTA_HEADERS_widgets})
        endif()
        if(ARG_TEST)
            target_link_libraries(${name} PRIVATE Qt6::Test)
            target_compile_options(${name} PRIVATE ${VELTA_TEST_OPTIONS})
            list(APPEND headers <QSignalSpy> <QTemporaryDir> <QTest>)
        else()
            target_compile_definitions(${name} PRIVATE ${VELTA_NO_CASTS})
        endif()
        target_precompile_headers(${name} PRIVATE ${headers})
    endif()
    target_link_libraries(${target} PRIVATE ${VELTA_QT_${kind}})
    target_precompile_headers(${target} REUSE_FROM ${name})
endfunction()

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
    velta_compile_at_once(velta_${name})
    target_compile_definitions(velta_${name} PRIVATE ${VELTA_NO_CASTS})
    target_link_libraries(velta_${name} PUBLIC velta::flags ${ARG_USES})
    velta_kind(kind ${ARG_USES})
    velta_precompile(velta_${name} ${kind})
    velta_renew_autogen(velta_${name} "${sources}")
    set_property(GLOBAL APPEND PROPERTY VELTA_MODULES velta::${name})
endfunction()

# velta_test_program(<program> SOURCES <sources>... TESTS <NameTest>... USES <targets>...): the moc of
# each test lies where its source includes it from. A test has its one class in its one source, so that
# nobody has to look for it at every build.
function(velta_test_program program)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;TESTS;USES")
    add_executable(${program} ${ARG_SOURCES})
    set_target_properties(${program} PROPERTIES AUTOMOC OFF)
    set(mocs "${CMAKE_CURRENT_BINARY_DIR}/${program}_moc")
    target_include_directories(${program} PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${mocs}")
    target_link_libraries(${program} PRIVATE velta::flags velta::Measures Qt6::Test ${ARG_USES})
    velta_kind(kind ${ARG_USES})
    target_compile_options(${program} PRIVATE ${VELTA_TEST_OPTIONS})
    target_link_options(${program} PRIVATE ${VELTA_TEST_LINK_OPTIONS})
    velta_precompile(${program} ${kind} TEST)
    foreach(name IN LISTS ARG_TESTS)
        qt_generate_moc("${name}.cpp" "${mocs}/${name}.moc" TARGET ${program})
        target_sources(${program} PRIVATE "${mocs}/${name}.moc")
    endforeach()
endfunction()

# velta_cases(<case> <once> <command>...): a test as a CTest case. Tests see neither the user's folders
# nor a display. Unless it is true that it is run once, it runs a second time as <case>.es_AR: where
# numbers have a decimal comma and windows are scaled by half as much again.
function(velta_cases case once)
    set(results "${PROJECT_BINARY_DIR}/test-results")
    set(home "${PROJECT_BINARY_DIR}/test-home")
    file(MAKE_DIRECTORY "${results}/es_AR" "${home}/run")
    file(CHMOD "${home}/run" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set(environment "QT_QPA_PLATFORM=offscreen;HOME=${home};XDG_RUNTIME_DIR=${home}/run")
    add_test(NAME ${case} COMMAND ${ARGN} -o "${results}/${case}.xml,junitxml" -o "-,txt")
    set_tests_properties(${case} PROPERTIES ENVIRONMENT "${environment}")
    if(once)
        return()
    endif()
    add_test(NAME ${case}.es_AR
        COMMAND ${ARGN} -o "${results}/es_AR/${case}.xml,junitxml" -o "-,txt")
    set_tests_properties(${case}.es_AR PROPERTIES ENVIRONMENT
        "${environment};LOCPATH=${VELTA_TEST_LOCALES};LC_ALL=es_AR.UTF-8;QT_SCALE_FACTOR=1.5")
endfunction()

# velta_tests(<program> [ONCE] TESTS <NameTest>... USES <targets>...): tests of this folder that share
# a program, each the CTest case <folder>.<NameTest>, in a process of its own: `<program> <NameTest>`.
# They are compiled some at once, so that each has a namespace of its own (support/TestProgram.h).
function(velta_tests program)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "ONCE" "" "TESTS;USES")
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}/tests" "${CMAKE_CURRENT_SOURCE_DIR}")
    set(sources)
    set(left ${ARG_TESTS})
    while(left)
        list(SUBLIST left 0 ${VELTA_AT_ONCE} some)
        list(REMOVE_ITEM left ${some})
        list(TRANSFORM some REPLACE "(.+)" "#include \"${folder}/\\1.cpp\"\n" OUTPUT_VARIABLE lines)
        list(JOIN lines "" text)
        list(LENGTH sources number)
        set(source "${CMAKE_CURRENT_BINARY_DIR}/${program}_${number}.cpp")
        file(CONFIGURE OUTPUT "${source}" CONTENT "${text}")
        list(APPEND sources "${source}")
    endwhile()
    velta_test_program(${program} SOURCES ${sources} TESTS ${ARG_TESTS} USES velta::TestProgram ${ARG_USES})
    get_filename_component(folder "${folder}" NAME)
    foreach(name IN LISTS ARG_TESTS)
        velta_cases(${folder}.${name} ${ARG_ONCE} ${program} ${name})
    endforeach()
endfunction()

# velta_test(<NameTest> [CASE <case>] [ONCE] USES <targets>...): NameTest.cpp of this folder, which has
# its program for itself, as the CTest case <folder>.<NameTest>, or <folder>.<case>.
function(velta_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "ONCE" "CASE" "USES")
    get_filename_component(folder "${CMAKE_CURRENT_SOURCE_DIR}" NAME)
    set(case "${name}")
    if(ARG_CASE)
        set(case "${ARG_CASE}")
    endif()
    velta_test_program(${name} SOURCES "${name}.cpp" TESTS ${name} USES ${ARG_USES})
    velta_cases(${folder}.${case} ${ARG_ONCE} ${name})
endfunction()

# velta_begin_early(<case>...): tests that take longest. They are begun before the others, which run
# meanwhile, and none of them is left alone at the end.
function(velta_begin_early)
    set_tests_properties(${ARGN} PROPERTIES COST 100)
endfunction()

# velta_bench(<name> USES <targets>...): bench/<name>.cpp with Google Benchmark.
function(velta_bench name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "USES")
    add_executable(${name} "${name}.cpp")
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/bench" "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${name}
        PRIVATE velta::flags velta::Measures benchmark::benchmark Qt6::Test ${ARG_USES})
    velta_kind(kind ${ARG_USES})
    target_compile_options(${name} PRIVATE ${VELTA_TEST_OPTIONS})
    target_link_options(${name} PRIVATE ${VELTA_TEST_LINK_OPTIONS})
    velta_precompile(${name} ${kind} TEST)
    add_dependencies(${name} stage_resources)
endfunction()
