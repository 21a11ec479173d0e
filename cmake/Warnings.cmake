# One interface target carries the warnings and sanitizers of the whole project.
add_library(salvor_options INTERFACE)
target_compile_options(salvor_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Wold-style-cast -Wcast-align -Woverloaded-virtual -Wnull-dereference -Wformat=2)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 warns of copies inside std::string that overlap or overrun where none does, of
    # overruns where it optimises fully.
    target_compile_options(salvor_options INTERFACE -Wno-restrict
        "$<$<CONFIG:Release>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread>")
    target_compile_options(salvor_options INTERFACE -fpch-preprocess -Winvalid-pch)
endif()
if(SALVOR_WERROR)
    target_compile_options(salvor_options INTERFACE -Werror)
endif()
target_compile_definitions(salvor_options INTERFACE
    $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
if(SALVOR_SANITIZERS)
    target_compile_options(salvor_options INTERFACE
        -fsanitize=${SALVOR_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC's analysis of null dereferences and initialisation misfires on instrumented code.
        target_compile_options(salvor_options INTERFACE
            -Wno-null-dereference -Wno-maybe-uninitialized)
    endif()
    target_link_options(salvor_options INTERFACE -fsanitize=${SALVOR_SANITIZERS})
endif()
if(SALVOR_FUZZ)
    target_compile_options(salvor_options INTERFACE -fsanitize=fuzzer-no-link)
    target_compile_definitions(salvor_options INTERFACE _GLIBCXX_ASSERTIONS)
endif()
if(SALVOR_COVERAGE)
    # Tests run side by side, and scans in threads: the counters have to be atomic.
    target_compile_options(salvor_options INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(salvor_options INTERFACE --coverage)
endif()
