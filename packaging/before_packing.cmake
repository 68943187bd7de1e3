# Run by CPack on the files to be packed: the directories that it made for them have the modes that
# the builder's umask left, and would carry them to the device.

file(CHMOD_RECURSE ${CPACK_TEMPORARY_DIRECTORY}/usr DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
