# `zu_add_man_page(PROGRAM SECTION)`: the program prints its man page itself, from the texts of its help.
function(zu_add_man_page program section)
    set(page ${PROJECT_BINARY_DIR}/man/${program}.${section})
    add_custom_command(OUTPUT ${page}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
        COMMAND ${program} --man > ${page}
        DEPENDS ${program}
        COMMENT "Making the man page of ${program}"
    )
    add_custom_target(${program}-man ALL DEPENDS ${page})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endfunction()
