# Builds text files into a library. Included, this file defines the function that does it; run as a script,
# cmake -DLIST=FILE -DOUTPUT=FILE -DHEADER=... -DFUNCTION=... -P embed_texts.cmake, it writes the C++ source
# that holds them. LIST is a file with the path of one text a line.
if(NOT CMAKE_SCRIPT_MODE_FILE)
    set(VELM_EMBED_TEXTS ${CMAKE_CURRENT_LIST_FILE})

    # velm_embed_texts(TARGET HEADER header FUNCTION name TEXTS pattern ...)
    # Defines the function that the header declares: std::span<const EmbeddedText> FUNCTION().
    function(velm_embed_texts target)
        cmake_parse_arguments(EMBED "" "HEADER;FUNCTION" "TEXTS" ${ARGN})
        file(GLOB texts CONFIGURE_DEPENDS ${EMBED_TEXTS})
        list(JOIN texts "\n" paths)
        set(list ${CMAKE_CURRENT_BINARY_DIR}/${EMBED_FUNCTION}.txt)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/${EMBED_FUNCTION}.cpp)
        # The list is only touched when a text was added or removed; then the source is written again.
        file(CONFIGURE OUTPUT ${list} CONTENT "@paths@\n" @ONLY)
        add_custom_command(
            OUTPUT ${source}
            COMMAND ${CMAKE_COMMAND} -DLIST=${list} -DOUTPUT=${source} -DHEADER=${EMBED_HEADER}
                    -DFUNCTION=${EMBED_FUNCTION} -P ${VELM_EMBED_TEXTS}
            DEPENDS ${texts} ${list} ${VELM_EMBED_TEXTS}
            COMMENT "Embedding the texts of ${EMBED_FUNCTION}"
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
    string(FIND "${text}" ")text\"" end)
    if(NOT end EQUAL -1)
        message(FATAL_ERROR "${path} contains the end mark of an embedded text")
    endif()
    string(APPEND rows "    {\"${name}\", R\"text(${text})text\"},\n")
endforeach()
file(WRITE "${OUTPUT}" "// Written by cmake/embed_texts.cmake.
#include \"${HEADER}\"

namespace velm::host {

namespace {

constexpr EmbeddedText kFiles[] = {
${rows}};

} // namespace

std::span<const EmbeddedText> ${FUNCTION}() { return kFiles; }

} // namespace velm::host
")
