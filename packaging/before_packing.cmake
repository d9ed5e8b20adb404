# Run by cpack before it packs: folders may be entered by all, whatever the habits of who makes the package.
file(CHMOD_RECURSE ${CPACK_TEMPORARY_INSTALL_DIRECTORY} DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
