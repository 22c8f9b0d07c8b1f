# Builds the texts of docs/nodes into a library. Included, this file defines the function that adds them to a target; run
# as a script, cmake -DLIST=FILE -DOUTPUT=FILE -P embed_help.cmake, it writes the C++ source that holds them. LIST is a
# file with the path of one text a line.
if(NOT CMAKE_SCRIPT_MODE_FILE)
    set(VELM_EMBED_HELP ${CMAKE_CURRENT_LIST_FILE})

    function(velm_embed_help target)
        file(GLOB texts CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/nodes/*.json)
        list(JOIN texts "\n" paths)
        set(list ${CMAKE_CURRENT_BINARY_DIR}/help_texts.txt)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/help_files.cpp)
        # The list is only touched when a text was added or removed; then the source is written again.
        file(CONFIGURE OUTPUT ${list} CONTENT "@paths@\n" @ONLY)
        add_custom_command(
            OUTPUT ${source}
            COMMAND ${CMAKE_COMMAND} -DLIST=${list} -DOUTPUT=${source} -P ${VELM_EMBED_HELP}
            DEPENDS ${texts} ${list} ${VELM_EMBED_HELP}
            COMMENT "Embedding docs/nodes"
            VERBATIM)
        target_sources(${target} PRIVATE ${source})
    endfunction()
    return()
endif()

file(STRINGS "${LIST}" paths)
set(rows "")
foreach(path IN LISTS paths)
    get_filename_component(name "${path}" NAME)
    file(READ "${path}" text)
    string(FIND "${text}" ")help\"" end)
    if(NOT end EQUAL -1)
        message(FATAL_ERROR "${path} contains the end mark of an embedded text")
    endif()
    string(APPEND rows "    {\"${name}\", R\"help(${text})help\"},\n")
endforeach()
file(WRITE "${OUTPUT}" "// Written by cmake/embed_help.cmake.
#include \"host/help/help_files.h\"

namespace velm::host {

namespace {

constexpr HelpFile kFiles[] = {
${rows}};

} // namespace

std::span<const HelpFile> helpFiles() { return kFiles; }

} // namespace velm::host
")
