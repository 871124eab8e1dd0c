# kavio_compile: warnings and sanitizers. Linked PRIVATE, so that neither reaches a program that uses the library.
add_library(kavio_compile INTERFACE)
# GCC 12 takes the storage of a moved empty std::optional for uninitialized, and joined strings for overlapping; the
# sanitizers watch for these instead.
target_compile_options(kavio_compile INTERFACE
  "$<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow>"
  "$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized;-Wno-restrict>" $<$<BOOL:${KAVIO_WERROR}>:-Werror>)
if(KAVIO_SANITIZE)
  # For the whole tree, including third-party templates in our objects: a sanitizer that sees only half of a
  # container gives false reports.
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
    # What ccache needs.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess> "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
  endif()
endfunction()
