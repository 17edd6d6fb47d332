// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Preloaded into a program with a window: ends it as soon as its first frame is painted. So it is
// the same for every program, and none has anything built in for it. With FIRST_FRAME_TREE set the
// tree of widgets goes into the file of that name first.
#include <gtk/gtk.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

bool painted = false;

void printTree(GtkWidget* widget, int depth, FILE* file) {
  std::fprintf(file, "%*s%s", 2 * depth, "", G_OBJECT_TYPE_NAME(widget));
  if (!gtk_widget_get_visible(widget)) std::fprintf(file, " hidden");
  if (!gtk_widget_get_sensitive(widget)) std::fprintf(file, " insensitive");
  if (GTK_IS_LABEL(widget)) std::fprintf(file, " \"%s\"", gtk_label_get_text(GTK_LABEL(widget)));
  if (GTK_IS_TEXT(widget))
    std::fprintf(file, " \"%s\"", gtk_editable_get_text(GTK_EDITABLE(widget)));
  if (GTK_IS_CHECK_BUTTON(widget) && gtk_check_button_get_active(GTK_CHECK_BUTTON(widget)))
    std::fprintf(file, " active");
  std::fprintf(file, " %dx%d\n", gtk_widget_get_width(widget), gtk_widget_get_height(widget));
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child))
    printTree(child, depth + 1, file);
}

gboolean onRender(GSignalInvocationHint* /*hint*/, guint /*count*/, const GValue* /*values*/,
                  gpointer /*data*/) {
  painted = true;
  return FALSE;
}

void onAfterPaint(GdkFrameClock* /*clock*/, gpointer window) {
  if (!painted) return;
  if (const char* name = std::getenv("FIRST_FRAME_TREE")) {
    FILE* file = std::fopen(name, "we");
    printTree(GTK_WIDGET(window), 0, file);
    std::fclose(file);
  }
  _exit(0);
}

/** Waits for the window, which comes before the main loop goes round for the first time. */
gboolean findWindow(gpointer /*data*/) {
  if (gtk_is_initialized() == FALSE) return G_SOURCE_CONTINUE;
  auto* window = static_cast<GtkWidget*>(g_list_model_get_item(gtk_window_get_toplevels(), 0));
  GdkFrameClock* clock = window != nullptr ? gtk_widget_get_frame_clock(window) : nullptr;
  if (clock == nullptr) return G_SOURCE_CONTINUE;
  g_signal_add_emission_hook(g_signal_lookup("render", GDK_TYPE_SURFACE), 0, onRender, nullptr,
                             nullptr);
  g_signal_connect(clock, "after-paint", G_CALLBACK(onAfterPaint), window);
  return G_SOURCE_REMOVE;
}

[[gnu::constructor]] void prepare() {
  g_idle_add_full(G_PRIORITY_HIGH, findWindow, nullptr, nullptr);
}

}  // namespace
