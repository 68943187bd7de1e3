# Run by CPack behind the .deb. The .tgz is made of that one's very files, which belong to root
# whoever builds and stand in a fixed order; CPack's own would keep the builder and the order in
# which the directories are read.

cmake_path(GET CPACK_PACKAGE_FILES STEM LAST_ONLY name)
execute_process(COMMAND dpkg-deb --fsys-tarfile ${CPACK_PACKAGE_FILES} COMMAND gzip -9n
    OUTPUT_FILE ${CPACK_PACKAGE_DIRECTORY}/${name}.tgz COMMAND_ERROR_IS_FATAL ANY)
