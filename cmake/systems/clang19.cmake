set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_FLAGS_INIT -Wno-deprecated-declarations)  # of libstdc++ 12 within its own algorithms
