# kavio_compile: warnings and sanitizers. Linked PRIVATE, so that neither reaches a program that uses the library.
add_library(kavio_compile INTERFACE)
# GCC 12 takes the storage of an empty std::optional that is moved for uninitialized, and joined strings for overlapping; the
# sanitizers watch these instead.
target_compile_options(kavio_compile INTERFACE
  "$<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow>"
  "$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized;-Wno-restrict>" $<$<BOOL:${KAVIO_WERROR}>:-Werror>)
if(KAVIO_SANITIZE)
  # The whole tree, third-party templates in our objects included: a sanitizer that sees half of a container lies.
  add_compile_options(-fsanitize=${KAVIO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KAVIO_SANITIZE})
endif()

# kavio_precompile(TARGET HEADER… | REUSE_FROM OTHER): headers that are slow to read and that most files of TARGET include.
function(kavio_precompile target)
  if(KAVIO_PRECOMPILE)
    if(ARGV1 STREQUAL "REUSE_FROM")
      target_precompile_headers(${target} ${ARGN})
    else()
      target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
    # What ccache asks for.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess> "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
  endif()
endfunction()
