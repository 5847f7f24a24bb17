# tk_room(NAME SOURCES file... [GBK_SOURCES file...] DEPENDS room... [DEFINES name...])
#   An object library of one room. DEPENDS is the room's include rule: what it may include, and no more.
#   GBK_SOURCES hold Chinese literals and compile with the narrow execution character set of the library.
#
# tk_test(NAME SOURCES file... LIBRARIES target... [LABELS label...] [TIMEOUT seconds])
#   One GoogleTest program; its sources may hold Chinese literals.

add_library(tk_options INTERFACE)
target_compile_options(tk_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wno-sign-conversion -Wcast-qual -Wformat=2 -Wno-format-nonliteral
    $<$<CXX_COMPILER_ID:Clang>:-Wno-unknown-warning-option$<SEMICOLON>-Wno-nested-anon-types>)
# Calls into another library go straight through the table of addresses, calls of exported functions inside of their own
# library directly: nobody puts others in their place. The first of them took 1.3 us off a query of 26.
if(NOT WIN32)
    target_compile_options(tk_options INTERFACE
        "$<$<CONFIG:Release,RelWithDebInfo>:-fno-plt;-fno-semantic-interposition>")
endif()
if(TK_WARNINGS_AS_ERRORS)
    target_compile_options(tk_options INTERFACE -Werror)
endif()
if(TK_SANITIZE)
    target_compile_options(tk_options INTERFACE -fsanitize=${TK_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    target_link_options(tk_options INTERFACE -fsanitize=${TK_SANITIZE})
endif()
# GCC only. What the recorded programs never ran is compiled as without a profile; counts of threads need not add up.
# Copies specialised for the lengths that were seen look too long for places where those lengths do not come.
set(profile_record -fprofile-generate -fprofile-update=atomic)
set(profile_use -fprofile-use -fprofile-partial-training -fprofile-correction -Wno-missing-profile
    -Wno-stringop-overflow -Wno-stringop-overread)
if(TK_PROFILE)
    if(NOT TK_PROFILE MATCHES "^(record|use)$")
        message(FATAL_ERROR "TK_PROFILE is record, use or nothing, not ${TK_PROFILE}")
    endif()
    target_compile_options(tk_options INTERFACE ${profile_${TK_PROFILE}})
    target_link_options(tk_options INTERFACE ${profile_${TK_PROFILE}})
endif()

function(tk_gbk_sources)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS -fexec-charset=GBK)
    endif()
endfunction()

function(tk_room name)
    cmake_parse_arguments(ARG "" "" "SOURCES;GBK_SOURCES;DEPENDS;DEFINES" ${ARGN})
    add_library(tk_${name} OBJECT ${ARG_SOURCES} ${ARG_GBK_SOURCES})
    if(ARG_GBK_SOURCES)
        tk_gbk_sources(${ARG_GBK_SOURCES})
    endif()
    # $<BUILD_INTERFACE> keeps the options out of the installed package.
    target_link_libraries(tk_${name} PRIVATE tk_options)
    target_include_directories(tk_${name} PUBLIC "${PROJECT_SOURCE_DIR}")
    foreach(room IN LISTS ARG_DEPENDS)
        if(WIN32 AND room STREQUAL "win32")
            continue()
        endif()
        target_link_libraries(tk_${name} PUBLIC tk_${room}_headers)
    endforeach()
    if(ARG_DEFINES)
        target_compile_definitions(tk_${name} PRIVATE ${ARG_DEFINES})
    endif()
endfunction()

# tk_headers(NAME DIRS dir... [DEPENDS room...]): the include folders that come with depending on a room.
function(tk_headers name)
    cmake_parse_arguments(ARG "" "" "DIRS;DEPENDS" ${ARGN})
    add_library(tk_${name}_headers INTERFACE)
    foreach(dir IN LISTS ARG_DIRS)
        target_include_directories(tk_${name}_headers INTERFACE "${dir}")
    endforeach()
    foreach(room IN LISTS ARG_DEPENDS)
        if(WIN32 AND room STREQUAL "win32")
            continue()
        endif()
        target_link_libraries(tk_${name}_headers INTERFACE tk_${room}_headers)
    endforeach()
endfunction()

function(tk_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS;DEFINES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    tk_gbk_sources(${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE tk_options ${ARG_LIBRARIES} GTest::gmock GTest::gtest_main)
    if(TK_SANITIZE)
        # What is tested is optimised, the tests are not: instrumented, that doubles the time they take to compile.
        target_compile_options(${name} PRIVATE -O0)
    endif()
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/tests")
    if(ARG_DEFINES)
        target_compile_definitions(${name} PRIVATE ${ARG_DEFINES})
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
endfunction()
