#include <kavio/gtk.h>

#include <gtk/gtk.h>

int main() {
    if (gtk_init_check())
        kavio::makeGtkPlatform(gtk_application_new("org.example.wallet", G_APPLICATION_DEFAULT_FLAGS));
}
