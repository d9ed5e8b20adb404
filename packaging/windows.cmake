# The archive for Windows that "cpack" makes: one folder from which everything runs, since the engine looks for
# tarvelmon.ini, book.bin and the folder syzygy where it is started. Texts have the ends of lines that are usual there.
configure_file(windows-readme.txt.in README.txt @ONLY NEWLINE_STYLE CRLF)
configure_file(${CMAKE_SOURCE_DIR}/data/tarvelmon.ini tarvelmon.ini @ONLY NEWLINE_STYLE CRLF)
configure_file(${CMAKE_SOURCE_DIR}/LICENSE LICENSE.txt @ONLY NEWLINE_STYLE CRLF)

install(TARGETS tarvelmon tarvelmon-gui tarvelmon-book RUNTIME DESTINATION .)
install(FILES ${CMAKE_BINARY_DIR}/book.bin ${CMAKE_CURRENT_BINARY_DIR}/tarvelmon.ini
  ${CMAKE_CURRENT_BINARY_DIR}/README.txt ${CMAKE_CURRENT_BINARY_DIR}/LICENSE.txt DESTINATION .)
install(DIRECTORY DESTINATION syzygy)

set(CPACK_PACKAGE_VENDOR "The tarvelmon authors")
set(CPACK_GENERATOR ZIP)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_FILE_NAME tarvelmon-${PROJECT_VERSION}-windows-x86_64)
include(CPack)
