# Finds OpenImageIO; targets link OpenImageIO::OpenImageIO.
find_package(OpenImageIO REQUIRED)

# The package's description may name include directories of optional parts that are not installed, which CMake treats
# as an error.
get_target_property(declared OpenImageIO::OpenImageIO INTERFACE_INCLUDE_DIRECTORIES)
set(existing)
foreach(directory IN LISTS declared)
    if(EXISTS ${directory})
        list(APPEND existing ${directory})
    endif()
endforeach()
set_target_properties(OpenImageIO::OpenImageIO PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${existing}")
