# Writes files into a C++ source: cmake -DOUTPUT=FILE -P embed-pages.cmake GALLERY-FOLDER PAGE
file(GLOB pages ${CMAKE_ARGV4}/*.html)
set(source "#include \"sandbox/gallery.h\"\n\nnamespace kavio::sandbox {\nstatic constexpr GalleryFile files[]{\n")
foreach(page IN LISTS pages)
  cmake_path(GET page STEM name)
  file(READ ${page} content)
  string(APPEND source "{\"${name}\", R\"page(${content})page\"},\n")
endforeach()
file(READ ${CMAKE_ARGV5} content)
file(WRITE ${OUTPUT} "${source}};\nconst std::span<const GalleryFile> galleryFiles{files};
extern const std::string_view pageFile;\nconst std::string_view pageFile = R\"page(${content})page\";
}  // namespace kavio::sandbox\n")
