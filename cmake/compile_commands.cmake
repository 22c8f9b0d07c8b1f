# Editors and language servers look for compile_commands.json in the top directory: a link there leads to the one of the
# build that was configured last for this machine. The builds with sanitizers, with other compilers or without the host
# leave the link alone.
if(PROJECT_IS_TOP_LEVEL AND VELM_HOST AND NOT VELM_SANITIZE AND NOT VELM_FUZZ AND NOT CMAKE_CROSSCOMPILING)
    file(CREATE_LINK ${PROJECT_BINARY_DIR}/compile_commands.json ${PROJECT_SOURCE_DIR}/compile_commands.json
        RESULT ignored SYMBOLIC)
endif()
