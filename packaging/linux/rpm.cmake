# The rpm, for Fedora. rpmbuild finds the libraries by their sonames, which are the same there; packages have other names.
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_RELEASE ${HARVELLON_BUILD_NUMBER})
set(CPACK_RPM_PACKAGE_SUMMARY "Mount and open the projects of the Harvellon platform")
set(CPACK_RPM_PACKAGE_DESCRIPTION ${CPACK_PACKAGE_DESCRIPTION})
set(CPACK_PACKAGE_RELOCATABLE OFF)
set(CPACK_RPM_PACKAGE_LICENSE LicenseRef-proprietary)
set(CPACK_RPM_PACKAGE_GROUP Applications/Internet)
set(CPACK_RPM_PACKAGE_REQUIRES "qt6-qtdeclarative, qt6-qtsvg, fuse-sshfs, fuse3, openssh-clients, xdg-utils, hicolor-icon-theme")
set(CPACK_RPM_CHANGELOG_FILE ${CMAKE_CURRENT_BINARY_DIR}/rpm-changelog)
set(CPACK_RPM_COMPRESSION_TYPE xz)
# These folders belong to other packages.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION /usr/libexec /usr/share/applications /usr/share/metainfo /usr/share/man
    /usr/share/man/man1 /usr/share/bash-completion /usr/share/bash-completion/completions /usr/share/fish
    /usr/share/fish/vendor_completions.d /usr/share/zsh /usr/share/zsh/site-functions /usr/share/icons
    /usr/share/icons/hicolor)
foreach(size 16x16 24x24 32x32 48x48 64x64 128x128 256x256 512x512 scalable)
    list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
        /usr/share/icons/hicolor/${size} /usr/share/icons/hicolor/${size}/apps)
endforeach()
# The same package from each machine: its name, the time and the folder of build ids stay out, and CPack has stripped.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _buildhost harvellon.example
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _build_id_links none
%define __os_install_post %{nil}
Packager: ${CPACK_PACKAGE_CONTACT}
Recommends: (gnome-keyring or kwalletd)
Recommends: qt6-qttranslations
Recommends: qt6-qtwayland")
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/staged.cmake)
