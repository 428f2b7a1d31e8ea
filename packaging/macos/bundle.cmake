# HarvellonConnect.app: what Finder and the system need to know stands in its Info.plist.
set(icons ${CMAKE_CURRENT_BINARY_DIR}/AppIcon.iconset)
set(icon ${CMAKE_CURRENT_BINARY_DIR}/AppIcon.icns)
file(MAKE_DIRECTORY ${icons})
set(pictures)
foreach(size 16 32 128 256 512)
    math(EXPR double "2 * ${size}")
    configure_file(icons/AppIcon-${size}.png ${icons}/icon_${size}x${size}.png COPYONLY)
    configure_file(icons/AppIcon-${double}.png ${icons}/icon_${size}x${size}@2x.png COPYONLY)
    list(APPEND pictures ${icons}/icon_${size}x${size}.png ${icons}/icon_${size}x${size}@2x.png)
endforeach()
add_custom_command(OUTPUT ${icon} COMMAND iconutil --convert icns --output ${icon} ${icons} DEPENDS ${pictures} VERBATIM)
# The program is a target of another folder, where the command above is not known.
add_custom_target(harvellon_icon DEPENDS ${icon})
add_dependencies(HarvellonConnect harvellon_icon)

target_sources(HarvellonConnect PRIVATE ${icon})
set_source_files_properties(${icon} TARGET_DIRECTORY HarvellonConnect PROPERTIES
    GENERATED ON MACOSX_PACKAGE_LOCATION Resources)
# The cask links these, as it does the command.
foreach(file completion/harvellon-connect.bash completion/harvellon-connect.fish completion/_harvellon-connect
        linux/harvellon-connect.1)
    target_sources(HarvellonConnect PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    set_source_files_properties(${CMAKE_CURRENT_SOURCE_DIR}/${file} TARGET_DIRECTORY HarvellonConnect PROPERTIES
        MACOSX_PACKAGE_LOCATION Resources)
endforeach()
configure_file(macos/Info.plist.in ${CMAKE_CURRENT_BINARY_DIR}/Info.plist @ONLY)
set_target_properties(HarvellonConnect PROPERTIES
    MACOSX_BUNDLE ON
    MACOSX_BUNDLE_INFO_PLIST ${CMAKE_CURRENT_BINARY_DIR}/Info.plist
    BUILD_RPATH "@executable_path/../Frameworks")
set_target_properties(harvellon-connect PROPERTIES BUILD_RPATH "@executable_path/../Frameworks")
