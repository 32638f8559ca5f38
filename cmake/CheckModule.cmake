# Judges a linked module (or a program), and says how big it is.
#
#   cmake -DMODULE=libvelk.so -DREADELF=readelf -DNM=nm [-DLABEL=text] [-DENTRY=GetInterfaceFactory]
#         [-DLIBRARIES=libc.so.6,ld-linux-armhf.so.3] [-DBUDGET=131072] [-DREPORT=file] -P CheckModule.cmake
#
# Fails when the module exports anything but ENTRY, when it needs a library that is not in LIBRARIES, and when it is
# bigger than BUDGET bytes. What is not given is not checked.
# REPORT receives the findings as CMake variables, for whoever makes packages.
cmake_minimum_required(VERSION 3.25)

foreach(required MODULE READELF NM)
    if(NOT ${required})
        message(FATAL_ERROR "CheckModule: ${required} is not given")
    endif()
endforeach()
if(NOT LABEL)
    get_filename_component(LABEL "${MODULE}" NAME)
endif()

function(output_of result)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# ---- what it needs
output_of(dynamic "${CMAKE_COMMAND}" -E env LC_ALL=C "${READELF}" -W -d "${MODULE}")
string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*" lines "${dynamic}")
set(needed "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE ".*\\[(.*)\\].*" "\\1" library "${line}")
    list(APPEND needed "${library}")
endforeach()

# ---- what it exports; the names of versions are not symbols
output_of(defined "${CMAKE_COMMAND}" -E env LC_ALL=C "${NM}" -D --defined-only "${MODULE}")
string(REGEX MATCHALL "[0-9a-fA-F]+ [B-Zb-z] [^\n]+" lines "${defined}")
set(exported "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[0-9a-fA-F]+ [A-Za-z] ([^@\n]+).*" "\\1" symbol "${line}")
    list(APPEND exported "${symbol}")
endforeach()

# ---- the newest symbol of the C library that it asks for
output_of(undefined "${CMAKE_COMMAND}" -E env LC_ALL=C "${NM}" -D --undefined-only "${MODULE}")
string(REGEX MATCHALL "[^ \n]+@GLIBC_[0-9.]+" lines "${undefined}")
set(newest "0")
set(newest_symbols "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^(.*)@GLIBC_([0-9.]+)$" "\\1;\\2" pair "${line}")
    list(GET pair 0 symbol)
    list(GET pair 1 version)
    if(version VERSION_GREATER newest)
        set(newest "${version}")
        set(newest_symbols "")
    endif()
    if(version VERSION_EQUAL newest)
        list(APPEND newest_symbols "${symbol}")
    endif()
endforeach()

file(SIZE "${MODULE}" size)
math(EXPR kib_tenths "(${size} * 10 + 512) / 1024")
math(EXPR kib "${kib_tenths} / 10")
math(EXPR tenth "${kib_tenths} % 10")
set(size_text "${size} bytes (${kib}.${tenth} KiB)")

# ---- the verdict
set(faults "")
if(ENTRY AND NOT exported STREQUAL ENTRY)
    list(APPEND faults "it exports '${exported}' and not just '${ENTRY}'")
endif()
if(LIBRARIES)
    string(REPLACE "," ";" allowed "${LIBRARIES}")
    foreach(library IN LISTS needed)
        if(NOT library IN_LIST allowed)
            list(APPEND faults "it needs ${library}, allowed are ${LIBRARIES}")
        endif()
    endforeach()
endif()
if(BUDGET)
    math(EXPR budget_kib "${BUDGET} / 1024")
    string(APPEND size_text " of ${budget_kib} KiB")
    if(size GREATER BUDGET)
        math(EXPR excess "${size} - ${BUDGET}")
        list(APPEND faults "it is ${excess} bytes over its budget of ${BUDGET}")
    endif()
endif()

list(JOIN needed " " needed_text)
list(JOIN newest_symbols " " newest_text)
message(STATUS "${LABEL}: ${size_text}; needs ${needed_text}; newest C library symbol GLIBC_${newest} (${newest_text})")
if(REPORT)
    file(WRITE "${REPORT}" "set(VELK_MODULE_FILE \"${MODULE}\")\n"
        "set(VELK_MODULE_SIZE ${size})\nset(VELK_MODULE_GLIBC ${newest})\nset(VELK_MODULE_NEEDS \"${needed}\")\n")
endif()
if(faults)
    list(JOIN faults "\n  " text)
    message(FATAL_ERROR "${MODULE} cannot be shipped:\n  ${text}")
endif()
