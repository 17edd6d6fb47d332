// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Loaded into the program (LD_PRELOAD), this does in its window what a person would do, one action
// a line of ZOR_PRESS, as soon as the window shows:
//   page LABEL | pick LABEL | fill LABEL=TEXT | press LABEL
// Just before the last action it asks for access to the file ZOR_PRESS_MARK: this shows in a trace
// of the program's system calls where the work that follows begins. Nothing of this is in the
// program.
#include <gtk/gtk.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string>

namespace {

std::string labelOf(GtkWidget* widget) {
  const char* text = nullptr;
  if (GTK_IS_LABEL(widget)) text = gtk_label_get_text(GTK_LABEL(widget));
  if (GTK_IS_BUTTON(widget)) text = gtk_button_get_label(GTK_BUTTON(widget));
  if (GTK_IS_CHECK_BUTTON(widget)) text = gtk_check_button_get_label(GTK_CHECK_BUTTON(widget));
  return text != nullptr ? text : "";
}

/** The first visible widget of a type with a label, in the order of the tree. */
GtkWidget* find(GtkWidget* widget, GType type, const std::string& label) {
  if (g_type_is_a(G_OBJECT_TYPE(widget), type) && labelOf(widget) == label) return widget;
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    if (!gtk_widget_get_visible(child)) continue;
    if (GtkWidget* found = find(child, type, label)) return found;
  }
  return nullptr;
}

GtkWidget* need(GtkWidget* root, GType type, const std::string& label) {
  GtkWidget* found = find(root, type, label);
  if (found == nullptr) g_error("there is no %s '%s'", g_type_name(type), label.c_str());
  return found;
}

void showPage(GtkWidget* window, const std::string& label) {
  GtkWidget* tab = need(window, GTK_TYPE_LABEL, label);
  auto* notebook = GTK_NOTEBOOK(gtk_widget_get_ancestor(tab, GTK_TYPE_NOTEBOOK));
  for (int page = 0; page < gtk_notebook_get_n_pages(notebook); ++page) {
    GtkWidget* child = gtk_notebook_get_nth_page(notebook, page);
    if (gtk_notebook_get_tab_label(notebook, child) == tab)
      gtk_notebook_set_current_page(notebook, page);
  }
}

void fill(GtkWidget* page, const std::string& label, const std::string& text) {
  auto* field = GTK_LABEL(need(page, GTK_TYPE_LABEL, label));
  gtk_editable_set_text(GTK_EDITABLE(gtk_label_get_mnemonic_widget(field)), text.c_str());
}

GtkWidget* currentPage(GtkWidget* window) {
  auto* notebook = GTK_NOTEBOOK(
      gtk_widget_get_ancestor(need(window, GTK_TYPE_LABEL, "Ethernet"), GTK_TYPE_NOTEBOOK));
  return gtk_notebook_get_nth_page(notebook, gtk_notebook_get_current_page(notebook));
}

void act(GtkWidget* window, const std::string& action, const std::string& argument) {
  if (action == "page") {
    showPage(window, argument);
  } else if (action == "pick") {
    gtk_check_button_set_active(
        GTK_CHECK_BUTTON(need(currentPage(window), GTK_TYPE_CHECK_BUTTON, argument)), TRUE);
  } else if (action == "fill") {
    const auto separator = argument.find('=');
    fill(currentPage(window), argument.substr(0, separator), argument.substr(separator + 1));
  } else if (action == "press") {
    g_signal_emit_by_name(need(window, GTK_TYPE_BUTTON, argument), "clicked");
  } else {
    g_error("unknown action '%s'", action.c_str());
  }
}

gboolean actWhenShown(gpointer) {
  if (!gtk_is_initialized()) return G_SOURCE_CONTINUE;
  GListModel* windows = gtk_window_get_toplevels();
  auto* window = static_cast<GtkWidget*>(g_list_model_get_item(windows, 0));
  if (window == nullptr) return G_SOURCE_CONTINUE;
  if (gtk_widget_get_mapped(window)) {
    std::istringstream script(std::getenv("ZOR_PRESS"));
    for (std::string line; std::getline(script, line);) {
      if (script.peek() == EOF) (void)access(std::getenv("ZOR_PRESS_MARK"), F_OK);
      const auto blank = line.find(' ');
      act(window, line.substr(0, blank), line.substr(blank + 1));
    }
  }
  const bool mapped = gtk_widget_get_mapped(window);
  g_object_unref(window);
  return mapped ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
}

[[gnu::constructor]] void start() {
  unsetenv("LD_PRELOAD");  // not for what the program starts
  g_timeout_add(1, actWhenShown, nullptr);
}

}  // namespace
