# The documents as they are installed: README.md and docs/ beside it, as in the source tree, so that links between them
# work in both. A link into the rest of the source tree becomes its words.
set(VELK_SOURCE_ONLY "interfaces|protlib|symbols|description|driver|factory|host|plc|tools|tests|bench|examples")
string(APPEND VELK_SOURCE_ONLY "|CONTRIBUTING\\.md|LICENSE")

function(velk_installed_documents folder)
    file(GLOB documents CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/README.md"
        "${PROJECT_SOURCE_DIR}/docs/*.md")
    file(REMOVE_RECURSE "${folder}")
    foreach(document IN LISTS documents)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${document}")
        file(READ "${PROJECT_SOURCE_DIR}/${document}" text)
        string(REGEX REPLACE "\\[([^][]+)\\]\\((\\.\\./)?(${VELK_SOURCE_ONLY})(/[^)]*)?\\)" "\\1" text "${text}")
        file(WRITE "${folder}/${document}" "${text}")
    endforeach()
endfunction()
