# Run by CPack on the files to be packed, for what Debian wants of a package and other installations do not.

set(share ${CPACK_TEMPORARY_DIRECTORY}/usr/share)
set(documents ${share}/doc/${CPACK_DEBIAN_PACKAGE_NAME})
set(overrides ${share}/lintian/overrides/${CPACK_DEBIAN_PACKAGE_NAME})
if(NOT EXISTS ${documents})
    file(RENAME ${share}/doc/zelta-ip ${documents})
endif()
file(MAKE_DIRECTORY ${share}/lintian/overrides)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog ${documents}/changelog @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/copyright ${documents}/copyright @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/lintian-overrides ${overrides} @ONLY)
file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
file(GLOB_RECURSE pages ${share}/man/*)
execute_process(COMMAND gzip -9n ${documents}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)

# The C library has to be as new as the newest of the symbols that are used. Debian's own program for
# this knows the building machine's library alone.
execute_process(COMMAND readelf --wide --version-info ${CPACK_TEMPORARY_DIRECTORY}/usr/bin/zelta-ip
    OUTPUT_VARIABLE told COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "GLIBC_[0-9.]+" versions "${told}")
list(SORT versions COMPARE NATURAL)
if(versions)
    list(POP_BACK versions newest)
    string(REPLACE GLIBC_ "libc6 (>= " CPACK_DEBIAN_PACKAGE_DEPENDS "${newest})")
endif()

# Files and directories have the modes that the builder's umask left, and would carry them to the device.
file(GLOB_RECURSE files ${documents}/* ${share}/man/* ${overrides})
file(CHMOD ${files} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(CHMOD_RECURSE ${CPACK_TEMPORARY_DIRECTORY}/usr DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
