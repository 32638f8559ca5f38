# Turns CHANGELOG.md into a compressed Debian changelog.
#
#   cmake -DCHANGELOG=CHANGELOG.md -DOUTPUT=changelog.gz -DVERSION=1.2.3 -DMAINTAINER="Name <address>" -DGZIP=gzip
#         -P DebianChangelog.cmake
#
# A release is a line "## 1.2.3 - 2026-01-31" (or "- unreleased"); its entries are the lines that begin with "* ", with
# their continuation lines. Headings between them are dropped. The newest release has to be VERSION.
cmake_minimum_required(VERSION 3.25)

function(date_of result argument)
    execute_process(COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C TZ=UTC date -R ${argument}
        OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

file(READ "${CHANGELOG}" rest)
string(REPLACE ";" "," rest "${rest}") # a semicolon would part a CMake list
string(REPLACE "[" "(" rest "${rest}")
string(REPLACE "]" ")" rest "${rest}")
string(REPLACE "\n" ";" lines "${rest}")

set(text "")
set(closing "")
set(newest "")
foreach(line IN LISTS lines)
    if(line MATCHES "^## ([0-9.]+) - (.+)$")
        set(version "${CMAKE_MATCH_1}")
        set(day "${CMAKE_MATCH_2}")
        if(NOT newest)
            set(newest "${version}")
        endif()
        string(APPEND text "${closing}")
        if(day STREQUAL "unreleased")
            set(distribution UNRELEASED)
            if(DEFINED ENV{SOURCE_DATE_EPOCH})
                date_of(date "-d@$ENV{SOURCE_DATE_EPOCH}")
            else()
                date_of(date "-r${CHANGELOG}")
            endif()
        else()
            set(distribution unstable)
            date_of(date "-d${day}")
        endif()
        string(APPEND text "velk (${version}) ${distribution}; urgency=medium\n\n")
        set(closing "\n -- ${MAINTAINER}  ${date}\n\n")
    elseif(closing AND line MATCHES "^(\\* |  )")
        string(APPEND text "  ${line}\n")
    endif()
endforeach()
string(APPEND text "${closing}")
if(NOT newest STREQUAL VERSION)
    message(FATAL_ERROR "${CHANGELOG}: the newest release is '${newest}', the project says ${VERSION}")
endif()

get_filename_component(folder "${OUTPUT}" DIRECTORY)
file(MAKE_DIRECTORY "${folder}")
file(WRITE "${folder}/changelog" "${text}")
execute_process(COMMAND "${GZIP}" -9nf "${folder}/changelog" COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${folder}/changelog.gz" "${OUTPUT}")
