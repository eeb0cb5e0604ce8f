# `cmake --build build --target translations`: the template of every text users see
# (build/translations/pixcove.ts), for translators to start from. lupdate reads the whole source
# tree, so it is not part of the default build.
find_program(PIXCOVE_LUPDATE NAMES lupdate lupdate-qt6 HINTS /usr/lib/qt6/bin ${QT6_INSTALL_PREFIX}/bin)
if(PIXCOVE_LUPDATE)
  add_custom_target(translations
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/translations
    COMMAND ${PIXCOVE_LUPDATE} -silent -no-obsolete -locations relative -source-language en
      ${CMAKE_SOURCE_DIR}/src -ts ${CMAKE_BINARY_DIR}/translations/pixcove.ts
    COMMENT "Collecting the texts to translate into translations/pixcove.ts"
    VERBATIM)
else()
  add_custom_target(translations
    COMMAND ${CMAKE_COMMAND} -E echo "lupdate not found: scripts/setup installs qt6-l10n-tools"
    COMMAND ${CMAKE_COMMAND} -E false)
endif()
