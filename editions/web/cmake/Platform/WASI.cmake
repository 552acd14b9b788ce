# CMake 3.25 does not know this system: programs and static libraries, nothing that is shared.
set(CMAKE_EXECUTABLE_SUFFIX .wasm)
set_property(GLOBAL PROPERTY TARGET_SUPPORTS_SHARED_LIBS FALSE)
