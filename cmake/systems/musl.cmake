# musl, static. Debian has no C++ library for it: this takes libc++, whose headers know musl, and adds the few functions
# that it was compiled to call and musl lacks (musl_additions.c). Its streams cannot print floating-point numbers.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER clang++-19)
set(llvm /usr/lib/llvm-19)
string(JOIN " " CMAKE_CXX_FLAGS_INIT
  -D_LIBCPP_HAS_MUSL_LIBC -nostdinc -nostdinc++ -isystem ${llvm}/include/c++/v1 -isystem ${llvm}/lib/clang/19/include
  -isystem /usr/include/x86_64-linux-musl)
set(additions ${CMAKE_CURRENT_LIST_DIR}/musl_additions.c)
set(CMAKE_CXX_LINK_EXECUTABLE
  "musl-gcc -static -Wl,--eh-frame-hdr <LINK_FLAGS> <OBJECTS> -o <TARGET> <LINK_LIBRARIES> ${additions} ${llvm}/lib/libc++.a ${llvm}/lib/libc++abi.a")
