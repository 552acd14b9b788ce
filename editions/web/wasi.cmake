# WebAssembly with clang, lld and libc++ 22 and wasi-libc, as Debian packs them.
set(CMAKE_SYSTEM_NAME WASI)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/cmake)

set(llvm /usr/lib/llvm-22)
set(CMAKE_CXX_COMPILER ${llvm}/bin/clang++)
set(CMAKE_AR ${llvm}/bin/llvm-ar)
set(CMAKE_RANLIB ${llvm}/bin/llvm-ranlib)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_SYSROOT /usr)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The host's libc++ must not be found; nor does a module of the page catch exceptions: the worker is replaced instead.
string(CONCAT CMAKE_CXX_FLAGS_INIT
  "-Wno-deprecated -nostdinc++ -isystem ${llvm}/include/wasm32-wasi/c++/v1 "
  "-flto -fno-exceptions -fno-rtti -fvisibility=hidden")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-L${llvm}/lib/wasm32-wasi -fuse-ld=${llvm}/bin/wasm-ld")
