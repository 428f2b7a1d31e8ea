# CPack runs this when the files of a package lie together. Fedora's zsh looks elsewhere, and its packages hold their changelog
# themselves.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
if(CPACK_GENERATOR STREQUAL RPM)
    file(RENAME ${share}/zsh/vendor-completions ${share}/zsh/site-functions)
    file(REMOVE ${share}/doc/harvellon-connect/changelog.Debian.gz)
endif()
# rpmbuild takes a later time of a file back to the commit's, but leaves an earlier one.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
        -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +)
endif()
