# The device's own library in the place of the virtual device's: docs/porting.md tells what must match.
file(GLOB headers RELATIVE ${PROJECT_SOURCE_DIR} hal/*.h)
foreach(header ${headers})
    # One that is missing would be taken from ours, which another library need not be built with.
    if(NOT EXISTS ${R47_HAL_INCLUDE_DIR}/${header})
        message(FATAL_ERROR "R47_HAL_INCLUDE_DIR: there is no ${header} in ${R47_HAL_INCLUDE_DIR}")
    endif()
endforeach()
if(R47_HAL_INCLUDE_DIR IN_LIST CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
    message(FATAL_ERROR "R47_HAL_INCLUDE_DIR: the compiler takes ours before ${R47_HAL_INCLUDE_DIR}/hal: copy that to a "
        "directory of its own")
endif()
execute_process(COMMAND ${CMAKE_READELF} -dW ${R47_HAL_LIBRARY} OUTPUT_VARIABLE dynamic ERROR_VARIABLE dynamic)
if(NOT dynamic MATCHES "\\(SONAME\\)[^\n]*\\[libhal\\.so\\.2\\]")
    message(FATAL_ERROR "R47_HAL_LIBRARY: ${R47_HAL_LIBRARY} is no library with the SONAME libhal.so.2")
endif()

add_library(hal SHARED IMPORTED)
set_target_properties(hal PROPERTIES IMPORTED_LOCATION ${R47_HAL_LIBRARY} IMPORTED_SONAME libhal.so.2)
include_directories(BEFORE ${R47_HAL_INCLUDE_DIR})
add_compile_options(-Wno-error)  # its headers may have warnings of their own
