// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <gtkmm/grid.h>
#include <gtkmm/label.h>
#include <gtkmm/widget.h>

#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

// Helpers for tests that build real widgets on a private display and emit their real signals.

namespace gtk_test {

// ---- Text and files

/** Joins lines, each ended by a line feed. */
std::string lines(std::initializer_list<std::string> texts);

/** The bytes of a file; empty text if there is none. */
std::string readBytes(const std::string& path);
void writeBytes(const std::string& path, const std::string& bytes);
bool exists(const std::string& path);

/**
 * All that an action prints: what went to standard output, then each line that went to standard
 * error with "! " before it. Child processes count too; they are waited for.
 */
std::string printedBy(const std::function<void()>& action);

// ---- Processes

/** Whether a child process was started and not yet waited for, running or not. */
bool hasChild();
void waitForChildren();

/** While it lives, files are accessed without root's rights. Does nothing for an ordinary user. */
class Unprivileged {
 public:
  Unprivileged();
  ~Unprivileged();
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;
};

// ---- Widgets

std::vector<Gtk::Widget*> children(Gtk::Widget& widget);

/** Runs the main loop until nothing is left to do. */
void settle();

/** Runs the main loop until the condition holds; false when it does not after ten seconds. */
bool eventually(const std::function<bool()>& condition);

/**
 * A widget and all below it, one line each: kind, text, and what was set on it. For what stands in
 * a grid the line begins with column, row, width and height. No more than so many levels below it.
 */
std::string describe(Gtk::Widget& widget, int levels = 10);

/** The first widget of a class, from the top, that the condition holds for. */
template <typename W>
W* findWidget(
    Gtk::Widget& root, const std::function<bool(W&)>& condition = [](W&) { return true; }) {
  auto* self = dynamic_cast<W*>(&root);
  if (self != nullptr && condition(*self)) return self;
  for (Gtk::Widget* child : children(root)) {
    if (W* found = findWidget<W>(*child, condition)) return found;
  }
  return nullptr;
}

/** The only way to a widget that has no accessor. Throws when it is not there. */
template <typename W>
W& widgetOf(Gtk::Widget& root) {
  if (W* found = findWidget<W>(root)) return *found;
  throw std::runtime_error("no such widget");
}

/** The button, check button or label with the given label. */
template <typename W>
W& labelled(Gtk::Widget& root, const Glib::ustring& label) {
  W* found = findWidget<W>(root, [&](W& widget) { return widget.get_label() == label; });
  if (found == nullptr) throw std::runtime_error("nothing labelled " + label.raw());
  return *found;
}

/** The field that a label of a grid stands beside. */
template <typename W>
W& fieldOf(Gtk::Widget& root, const Glib::ustring& label) {
  auto& labelWidget = labelled<Gtk::Label>(root, label);
  auto& grid = dynamic_cast<Gtk::Grid&>(*labelWidget.get_parent());
  int column = 0;
  int row = 0;
  int width = 0;
  int height = 0;
  grid.query_child(labelWidget, column, row, width, height);
  return dynamic_cast<W&>(*grid.get_child_at(column + width, row));
}

/** Emits the signal of a click, which has done all its work on return. */
void click(Gtk::Widget& button);

// ---- Fixture

/**
 * A private folder with keyfiles that the program finds in debug mode, and a recorder on PATH in
 * the place of the privileged program.
 */
class KeyfileTest : public testing::Test {
 protected:
  KeyfileTest();
  ~KeyfileTest() override;

  /** The path of a file in the folder of the keyfiles, and that folder itself. */
  std::string path(const std::string& name) const { return keyfileFolder + "/" + name; }
  const std::string& directory() const { return keyfileFolder; }

  /** Writes a keyfile. */
  void keyfile(const std::string& name, const std::string& content) const {
    writeBytes(path(name), content);
  }

  /** Has the program look for the keyfiles. What that prints is dropped. */
  void loadKeyfiles() const;

  /** What was asked of the privileged program since the last call, e.g. "[finalize_wifi][ZOR]". */
  std::string requests() const;

  /** From now on there is no privileged program. */
  void removePrivilegedProgram() const;

 private:
  std::string folder;
  std::string keyfileFolder;
  std::string binFolder;
  std::string recordFolder;
  std::string searchPath;
};

/** Keeps the update record, whose path is fixed, to one test at a time, and removes it. */
class UpdateRecordLock {
 public:
  static constexpr const char* PATH = "/tmp/ethernetUpdateSettings";
  UpdateRecordLock();
  ~UpdateRecordLock();
  UpdateRecordLock(const UpdateRecordLock&) = delete;
  UpdateRecordLock& operator=(const UpdateRecordLock&) = delete;

 private:
  int descriptor;
};

}  // namespace gtk_test
