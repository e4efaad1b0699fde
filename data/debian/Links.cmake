# Only for the Debian package, whose prefix is ${ORVAN_PACKAGE_ROOT}: the entries the desktop and
# the shell find in /usr point into that folder, so it stays the one copy a self-update replaces.
set(root ${ORVAN_PACKAGE_ROOT})
set(links
  "/usr/bin/orvan-companion=${root}/bin/orvan-companion"
  "/usr/share/applications/${ORVAN_BUNDLE_ID}.desktop=${root}/share/applications/${ORVAN_BUNDLE_ID}.desktop"
  "/usr/share/metainfo/${ORVAN_BUNDLE_ID}.metainfo.xml=${root}/share/metainfo/${ORVAN_BUNDLE_ID}.metainfo.xml"
  "/usr/share/icons/hicolor/scalable/apps/${ORVAN_BUNDLE_ID}.svg=${root}/share/icons/hicolor/scalable/apps/${ORVAN_BUNDLE_ID}.svg")
foreach(size IN LISTS ORVAN_ICON_SIZES)
  set(icon share/icons/hicolor/${size}x${size}/apps/${ORVAN_BUNDLE_ID}.png)
  list(APPEND links "/usr/${icon}=${root}/${icon}")
endforeach()
foreach(link IN LISTS links)
  string(REPLACE "=" ";" pair "${link}")
  list(GET pair 0 where)
  list(GET pair 1 target)
  get_filename_component(folder ${where} DIRECTORY)
  install(CODE "
    file(MAKE_DIRECTORY \"\$ENV{DESTDIR}${folder}\")
    file(CREATE_LINK \"${target}\" \"\$ENV{DESTDIR}${where}\" SYMBOLIC)")
endforeach()

# man looks in /usr/share/man only, and wants the page compressed there.
set(man_gz ${CMAKE_BINARY_DIR}/debian/orvan-companion.1.gz)
set(changelog_gz ${CMAKE_BINARY_DIR}/debian/changelog.Debian.gz)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${CMAKE_BINARY_DIR}/debian/changelog @ONLY)
install(CODE "
  execute_process(COMMAND gzip -9nc \"${CMAKE_BINARY_DIR}/bundle/share/man/man1/orvan-companion.1\"
                  OUTPUT_FILE \"${man_gz}\" COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND gzip -9nc \"${CMAKE_BINARY_DIR}/debian/changelog\"
                  OUTPUT_FILE \"${changelog_gz}\" COMMAND_ERROR_IS_FATAL ANY)")
install(FILES ${man_gz} DESTINATION /usr/share/man/man1)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION /usr/share/doc/orvan-companion)
install(FILES ${changelog_gz} DESTINATION /usr/share/doc/orvan-companion)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/lintian-overrides DESTINATION /usr/share/lintian/overrides
        RENAME orvan-companion)
