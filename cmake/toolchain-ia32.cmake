# 32-bit x86 programs on a 64-bit x86 machine (Debian: g++-multilib).
set(CMAKE_C_FLAGS_INIT -m32) # GoogleTest's build asks for a C compiler
set(CMAKE_CXX_FLAGS_INIT -m32)
