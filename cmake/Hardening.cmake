# Programs are position-independent, as libraries are. With ZU_HARDENED the compiler and the linker also add checks at run
# time: a defect that overwrites memory then ends the process instead of running foreign code.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported()

if(ZU_HARDENED)
    # Some distributions define _FORTIFY_SOURCE in the compiler; to define it again is a warning.
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection) # not every processor has the last one
        string(MAKE_C_IDENTIFIER "ZU_HAS${flag}" has_flag)
        check_cxx_compiler_flag(${flag} ${has_flag})
        if(${has_flag})
            add_compile_options(${flag})
            add_link_options(${flag}) # link-time optimisation compiles as well
        endif()
    endforeach()
    add_link_options(-Wl,-z,relro,-z,now)
endif()
