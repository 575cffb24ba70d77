# Compresses what Debian has compressed, before CPack makes packages of what it has installed.
file(GLOB_RECURSE files
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man[1-9]/*.[1-9]
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog
)
foreach(file ${files})
    execute_process(COMMAND gzip --best --no-name ${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
