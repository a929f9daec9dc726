# Compile options shared by every target, and one function per kind of target.

function(pellandra_build_options)
    add_library(pellandra_options INTERFACE)
    target_compile_options(pellandra_options INTERFACE -Wall -Wextra -Wpedantic)
    # The optimiser of g++ 12 sees an uninitialised pointer in QSharedPointer::create() that is none.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(pellandra_options INTERFACE -Wno-maybe-uninitialized)
    endif()
    if(PELLANDRA_WERROR)
        target_compile_options(pellandra_options INTERFACE -Werror)
    endif()
    target_compile_definitions(pellandra_options INTERFACE
        QT_DEPRECATED_WARNINGS QT_NO_KEYWORDS QT_NO_URL_CAST_FROM_STRING
        PELLANDRA_VERSION="1.0.3a")
    target_include_directories(pellandra_options INTERFACE "${PROJECT_SOURCE_DIR}")
    if(PELLANDRA_SANITIZE)
        set(PELLANDRA_SANITIZER_OPTIONS
            "ASAN_OPTIONS=detect_leaks=1;UBSAN_OPTIONS=print_stacktrace=1"
            "LSAN_OPTIONS=print_suppressions=0:suppressions=${PROJECT_SOURCE_DIR}/tests/leaks.supp" PARENT_SCOPE)
        # A test's own arithmetic is not what is looked at: its checks would take half of its time to build.
        target_compile_options(pellandra_options INTERFACE
            -fsanitize=${PELLANDRA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
            $<$<BOOL:$<TARGET_PROPERTY:PELLANDRA_IS_TEST>>:-fno-sanitize=undefined>)
        target_link_options(pellandra_options INTERFACE -fsanitize=${PELLANDRA_SANITIZE})
    endif()
endfunction()

# pellandra_room(<name> SOURCES <files...> LINKS <targets...>)
# The static library of one folder. Links are public: a room's headers name what it stands on.
function(pellandra_room name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(pellandra_${name} STATIC ${ARG_SOURCES})
    target_link_libraries(pellandra_${name} PUBLIC pellandra_options ${ARG_LINKS})
endfunction()

# The toolkit's headers in one piece for all tests. Every test then sees the same modules, whichever it links.
function(pellandra_test_headers)
    add_library(pellandra_testheaders STATIC "${CMAKE_CURRENT_SOURCE_DIR}/headers.cpp")
    set_target_properties(pellandra_testheaders PROPERTIES UNITY_BUILD OFF PELLANDRA_IS_TEST ON)
    target_link_libraries(pellandra_testheaders PUBLIC pellandra_options ${PELLANDRA_TEST_MODULES})
    target_precompile_headers(pellandra_testheaders PRIVATE <QtWidgets> <QtTest> <qwt_plot.h>)
endfunction()

# A test names its own .moc files, so that it needs none of the passes that look for classes: with as many tests
# as there are, those take as long as a tenth of the build.
function(pellandra_moc_tests name)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    target_include_directories(${name} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${name}.dir")
    foreach(source IN LISTS ARGN)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
        file(STRINGS "${source}" has_object REGEX "^ *Q_OBJECT" LIMIT_COUNT 1)
        if(NOT has_object)
            continue()
        endif()
        get_filename_component(base "${source}" NAME_WE)
        if(source MATCHES "\\.cpp$")
            set(moc "${CMAKE_CURRENT_BINARY_DIR}/${name}.dir/${base}.moc")
        else()
            set(moc "${CMAKE_CURRENT_BINARY_DIR}/${name}.dir/moc_${base}.cpp")
        endif()
        qt5_generate_moc("${source}" "${moc}" TARGET ${name})
        target_sources(${name} PRIVATE "${moc}")
    endforeach()
endfunction()

# pellandra_test(<name> SOURCES <files...> LINKS <targets...> [LABELS <labels...>] [XVFB] [PAGES] [TIMEOUT <s>])
# One Qt Test executable and its ctest entry. Every test runs with settings of its own. PAGES: it shows web pages; their
# engine refuses its own protection to root, and its threads end the search for leaks.
function(pellandra_test name)
    cmake_parse_arguments(ARG "XVFB;PAGES" "TIMEOUT" "SOURCES;LINKS;LABELS;ARGS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests" UNITY_BUILD OFF)
    target_link_libraries(${name} PRIVATE ${ARG_LINKS} Qt5::Test)
    set_target_properties(${name} PROPERTIES PELLANDRA_IS_TEST ON)
    pellandra_moc_tests(${name} ${ARG_SOURCES})
    # The headers fit only where no further module defines its macro.
    if(PELLANDRA_TEST_PCH AND NOT "Qt5::DBus" IN_LIST ARG_LINKS)
        target_link_libraries(${name} PRIVATE ${PELLANDRA_TEST_MODULES})
        target_precompile_headers(${name} REUSE_FROM pellandra_testheaders)
    endif()
    set(command $<TARGET_FILE:${name}> ${ARG_ARGS})
    set(platform "QT_QPA_PLATFORM=offscreen")
    if(ARG_XVFB)
        set(command xvfb-run -a -s "-screen 0 1920x1080x24" ${command})
        set(platform "QT_QPA_PLATFORM=xcb")
    endif()
    add_test(NAME ${name} COMMAND ${command} WORKING_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    if(NOT ARG_LABELS)
        set(ARG_LABELS unit)
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    if("e2e" IN_LIST ARG_LABELS)
        set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
    endif()
    set(home "${CMAKE_BINARY_DIR}/tests/home/${name}")
    file(MAKE_DIRECTORY "${home}")
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "${platform};XDG_CONFIG_HOME=${home};XDG_STATE_HOME=${home}/state;HOME=${home};XDG_RUNTIME_DIR=${home};LC_ALL=C.UTF-8;DBUS_SYSTEM_BUS_ADDRESS=unix:path=${home}/no-bus;${PELLANDRA_SANITIZER_OPTIONS}")
    if(ARG_PAGES)
        add_dependencies(${name} pellandra-web)
        set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT
            "QTWEBENGINE_DISABLE_SANDBOX=1" "ASAN_OPTIONS=detect_leaks=0")
    endif()
endfunction()
