# What a program that takes files from the network is built with: position independent, addresses
# bound and sealed at start, stack and buffer checks, no executable stack.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

option(GATEWAY_HARDENING "Build with stack protector, FORTIFY and full RELRO" ON)
option(GATEWAY_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)

add_library(hardening INTERFACE)
if(GATEWAY_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(GATEWAY_HARDENING)
    target_compile_options(hardening INTERFACE -fstack-protector-strong)
    # FORTIFY works on optimised code only; a toolchain may have set a level of its own.
    target_compile_options(hardening INTERFACE
        $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    target_link_options(hardening INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
