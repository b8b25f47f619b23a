# `cmake --install` ends by writing a manifest into the build folder. Where it cannot, since another user built there, it
# stops before it has installed anything.
install(CODE [[
    foreach(place "" "/install_manifest.txt")
        if(EXISTS "${CMAKE_CURRENT_LIST_DIR}${place}")
            execute_process(COMMAND test -w "${CMAKE_CURRENT_LIST_DIR}${place}" RESULT_VARIABLE isLocked)
            if(isLocked)
                message(FATAL_ERROR "This user cannot write ${CMAKE_CURRENT_LIST_DIR}${place}. "
                    "Install as the user who built and installed here before, or build anew. Nothing has been installed.")
            endif()
        endif()
    endforeach()
]])
