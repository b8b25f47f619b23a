# Writes a source that names the commit of the other sources, for `--version`: that of the archive of `git archive`, else that
# of the clone, with "-dirty" if something is changed in it.
#   cmake -DSOURCE=FOLDER -DOUTPUT=FILE -P Commit.cmake
cmake_minimum_required(VERSION 3.25)

file(STRINGS ${SOURCE}/cmake/commit.txt commit LIMIT_COUNT 1)
if(commit MATCHES "Format:")
    execute_process(COMMAND git describe --always --dirty --abbrev=40 --exclude=*
        WORKING_DIRECTORY ${SOURCE} OUTPUT_VARIABLE commit RESULT_VARIABLE result ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT result EQUAL 0)
        set(commit unknown)
    endif()
endif()
file(CONFIGURE OUTPUT ${OUTPUT} CONTENT "namespace ZuHost
{

extern char const COMMIT[];
char const COMMIT[] = \"${commit}\";

} // namespace ZuHost
") # leaves an equal file as it is
