# Fails when the library shows a symbol that is no part of its interface: something of the standard library, of an
# internal namespace (but for what exported classes hold), or of C.
#   cmake -DNM=nm -DLIBRARY=libTKKernel32.so -P exports.cmake
execute_process(COMMAND "${NM}" -DC --defined-only "${LIBRARY}" OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "cannot read ${LIBRARY}")
endif()
string(REPLACE ";" "," symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")

set(count 0)
foreach(line IN LISTS symbols)
    if(NOT line MATCHES "^[0-9a-f]* +[A-Za-z] (.*)$")
        continue()
    endif()
    set(symbol "${CMAKE_MATCH_1}")
    math(EXPR count "${count} + 1")
    if(symbol MATCHES "^((typeinfo|typeinfo name|vtable) for |guard variable for )?(tk::driver::RowShortCut|C[A-Z][A-Za-z]*)(::|$|<)")
        continue()  # a member of an exported class
    endif()
    if(symbol MATCHES "^(typeinfo|typeinfo name|vtable) for C[A-Z]")
        continue()
    endif()
    if(symbol MATCHES "^tk::session::(ReadStatistics|ToPrometheusText)\\(")
        continue()  # session_statistics.h
    endif()
    if(symbol MATCHES "^__odr_asan\\.")
        continue()  # how the address sanitizer marks each exported variable
    endif()
    if(symbol MATCHES "^(tk::|std::|__gnu|.* std::|.*\\(anonymous)" OR NOT symbol MATCHES "\\(")
        list(APPEND strangers "${symbol}")
    endif()
endforeach()

if(count LESS 300)
    message(FATAL_ERROR "only ${count} symbols: this is not the whole library")
endif()
if(strangers)
    list(JOIN strangers "\n  " strangers)
    message(FATAL_ERROR "symbols that are no part of the interface:\n  ${strangers}")
endif()
message(STATUS "${count} symbols, all of the interface")
