#include <kavio/gtk.h>

#include <gtk/gtk.h>

int main() { return &kavio::makeGtkPlatform != nullptr && gtk_get_major_version() == 4 ? 0 : 1; }
