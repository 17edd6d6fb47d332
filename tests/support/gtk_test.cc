// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "gtk_test.h"

#include <fcntl.h>
#include <glibmm/main.h>
#include <gtkmm/application.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/dropdown.h>
#include <gtkmm/entry.h>
#include <gtkmm/frame.h>
#include <gtkmm/notebook.h>
#include <gtkmm/stringlist.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "app/NetworkManagerConfig.h"

namespace gtk_test {
namespace {

constexpr uid_t NOBODY = 65534;

/** Starts the toolkit once for all tests of a program. */
class Toolkit : public testing::Environment {
 public:
  void SetUp() override {
    // On a terminal a child process would show lines that it loses in a file.
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
    application = Gtk::Application::create("test.widgets", Gio::Application::Flags::NON_UNIQUE);
    application->register_application();
  }
  void TearDown() override { application.reset(); }

 private:
  Glib::RefPtr<Gtk::Application> application;
};

// The framework owns it.
[[maybe_unused]] const testing::Environment* const TOOLKIT =
    testing::AddGlobalTestEnvironment(new Toolkit);

/** A new name in the folder for temporary files, for mkstemp() and mkdtemp(). */
std::string temporaryName(const std::string& name) {
  return std::filesystem::temp_directory_path() / (name + "-XXXXXX");
}

/** Sends a descriptor into a file while it lives. A program that dies leaves the file behind. */
class Redirection {
 public:
  explicit Redirection(int redirected)
      : number(redirected),
        saved(fcntl(number, F_DUPFD_CLOEXEC, 0)),
        name(temporaryName("captured")),
        file(mkostemp(name.data(), O_CLOEXEC)) {
    if (dup2(file, number) < 0) throw std::runtime_error("cannot capture what is printed");
  }
  ~Redirection() {
    dup2(saved, number);
    close(saved);
    close(file);
    unlink(name.c_str());
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

  std::string text() const { return readBytes(name); }

 private:
  int number;
  int saved;
  std::string name;
  int file;
};

std::string quoted(const Glib::ustring& text) { return "\"" + text.raw() + "\""; }

std::string alignment(Gtk::Align align) {
  switch (align) {
    case Gtk::Align::FILL:
      return "fill";
    case Gtk::Align::START:
      return "start";
    case Gtk::Align::CENTER:
      return "center";
    default:
      return "other";
  }
}

/** What was set on any kind of widget. */
std::string commonProperties(const Gtk::Widget& widget) {
  std::string text;
  if (widget.get_hexpand()) text += " hexpand";
  if (widget.get_hexpand_set() && !widget.get_hexpand()) text += " no-hexpand";
  if (widget.get_vexpand()) text += " vexpand";
  if (widget.get_halign() != Gtk::Align::FILL) text += " halign=" + alignment(widget.get_halign());
  if (widget.get_valign() != Gtk::Align::FILL) text += " valign=" + alignment(widget.get_valign());
  const std::array margins = {widget.get_margin_top(), widget.get_margin_end(),
                              widget.get_margin_bottom(), widget.get_margin_start()};
  if (std::set(margins.begin(), margins.end()).size() == 1) {
    if (margins[0] != 0) text += " margin=" + std::to_string(margins[0]);
  } else {
    text += " margins=" + std::to_string(margins[0]) + "," + std::to_string(margins[1]) + "," +
            std::to_string(margins[2]) + "," + std::to_string(margins[3]);
  }
  if (!widget.get_sensitive()) text += " insensitive";
  if (!widget.get_visible()) text += " hidden";
  return text;
}

std::string entryProperties(const Gtk::Entry& entry) {
  std::string text = "Entry " + quoted(entry.get_text());
  if (!entry.get_editable()) text += " read-only";
  if (!entry.get_visibility())
    text += " shown-as=" + Glib::ustring(1, entry.get_invisible_char()).raw();
  if (entry.get_max_length() != 0) text += " max-length";
  if (!entry.get_placeholder_text().empty()) text += " placeholder";
  if (entry.get_input_purpose() == Gtk::InputPurpose::PASSWORD) {
    text += " for-a-password";
  } else if (entry.get_input_purpose() != Gtk::InputPurpose::FREE_FORM) {
    text += " other-purpose";
  }
  return text;
}

std::string dropDownProperties(Gtk::DropDown& dropDown) {
  std::string text = "DropDown";
  const auto model = std::dynamic_pointer_cast<Gtk::StringList>(dropDown.get_model());
  for (guint i = 0; model && i < model->get_n_items(); ++i)
    text += " " + model->get_string(i).raw();
  return text + " selected=" + std::to_string(dropDown.get_selected());
}

std::string kindAndText(Gtk::Widget& widget) {
  if (auto* entry = dynamic_cast<Gtk::Entry*>(&widget)) return entryProperties(*entry);
  if (auto* dropDown = dynamic_cast<Gtk::DropDown*>(&widget)) return dropDownProperties(*dropDown);
  if (auto* label = dynamic_cast<Gtk::Label*>(&widget)) {
    const bool centred = label->get_xalign() == 0.5F;
    return "Label " + quoted(label->get_text()) + (centred ? "" : " not-centred");
  }
  if (auto* check = dynamic_cast<Gtk::CheckButton*>(&widget))
    return "CheckButton " + quoted(check->get_label()) + (check->get_active() ? " active" : "");
  if (auto* button = dynamic_cast<Gtk::Button*>(&widget))
    return "Button " + quoted(button->get_label()) +
           (button->get_use_underline() ? " mnemonic" : "");
  if (auto* notebook = dynamic_cast<Gtk::Notebook*>(&widget))
    return notebook->get_tab_pos() == Gtk::PositionType::TOP ? "Notebook tabs=top" : "Notebook";
  if (auto* frame = dynamic_cast<Gtk::Frame*>(&widget))
    return frame->get_label_widget() == nullptr ? "Frame" : "Frame with-label";
  if (auto* grid = dynamic_cast<Gtk::Grid*>(&widget))
    return std::string("Grid") + (grid->get_column_homogeneous() ? " equal-columns" : "") +
           (grid->get_row_homogeneous() ? " equal-rows" : "");
  if (auto* box = dynamic_cast<Gtk::Box*>(&widget))
    return std::string("Box ") +
           (box->get_orientation() == Gtk::Orientation::VERTICAL ? "vertical" : "horizontal") +
           (box->get_spacing() == 0 ? "" : " spacing=" + std::to_string(box->get_spacing()));
  return "other widget";
}

std::string gridPlace(Gtk::Widget& widget) {
  auto* grid = dynamic_cast<Gtk::Grid*>(widget.get_parent());
  if (grid == nullptr) return {};
  int column = 0;
  int row = 0;
  int width = 0;
  int height = 0;
  grid->query_child(widget, column, row, width, height);
  return "(" + std::to_string(column) + "," + std::to_string(row) + "," + std::to_string(width) +
         "," + std::to_string(height) + ") ";
}

void describeInto(std::string& text, Gtk::Widget& widget, const std::string& prefix,
                  const std::string& indentation, int levels) {
  text += indentation + prefix + kindAndText(widget) + commonProperties(widget) + "\n";
  if (auto* notebook = dynamic_cast<Gtk::Notebook*>(&widget)) {
    for (int i = 0; i < notebook->get_n_pages(); ++i) {
      Gtk::Widget& page = *notebook->get_nth_page(i);
      text += indentation + "  page " + quoted(notebook->get_tab_label_text(page)) + "\n";
    }
    return;
  }
  const bool container = dynamic_cast<Gtk::Box*>(&widget) != nullptr ||
                         dynamic_cast<Gtk::Grid*>(&widget) != nullptr ||
                         dynamic_cast<Gtk::Frame*>(&widget) != nullptr;
  if (!container || levels == 0) return;
  for (Gtk::Widget* child : children(widget))
    describeInto(text, *child, gridPlace(*child), indentation + "  ", levels - 1);
}

}  // namespace

std::string lines(std::initializer_list<std::string> texts) {
  std::string joined;
  for (const std::string& text : texts) joined += text + "\n";
  return joined;
}

std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

bool exists(const std::string& path) { return std::filesystem::exists(path); }

std::string printedBy(const std::function<void()>& action) {
  std::fflush(stdout);
  std::string text;
  std::string errors;
  {
    const Redirection out(STDOUT_FILENO);
    const Redirection err(STDERR_FILENO);
    action();
    waitForChildren();
    std::fflush(stdout);
    text = out.text();
    errors = err.text();
  }
  std::istringstream errorLines(errors);
  for (std::string line; std::getline(errorLines, line);)
    text += "! " + line + (errorLines.eof() ? "" : "\n");
  return text;
}

bool hasChild() {
  siginfo_t info{};
  return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

void waitForChildren() {
  while (waitpid(-1, nullptr, 0) > 0) {
  }
}

Unprivileged::Unprivileged() {
  if (geteuid() == 0 && seteuid(NOBODY) != 0) throw std::runtime_error("cannot drop root's rights");
}

Unprivileged::~Unprivileged() {
  if (getuid() == 0 && seteuid(0) != 0) std::abort();
}

std::vector<Gtk::Widget*> children(Gtk::Widget& widget) {
  std::vector<Gtk::Widget*> found;
  for (Gtk::Widget* child = widget.get_first_child(); child != nullptr;
       child = child->get_next_sibling())
    found.push_back(child);
  return found;
}

void settle() {
  while (Glib::MainContext::get_default()->iteration(false)) {
  }
}

bool eventually(const std::function<bool()>& condition) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  // The timer ends each wait for an event, so that the condition and the limit are looked at.
  sigc::connection ticks = Glib::signal_timeout().connect([] { return true; }, 5);
  bool holds = condition();
  while (!holds && std::chrono::steady_clock::now() < limit) {
    Glib::MainContext::get_default()->iteration(true);
    holds = condition();
  }
  ticks.disconnect();
  return holds;
}

std::string describe(Gtk::Widget& widget, int levels) {
  std::string text;
  describeInto(text, widget, "", "", levels);
  return text;
}

void click(Gtk::Widget& button) { g_signal_emit_by_name(button.gobj(), "clicked"); }

KeyfileTest::KeyfileTest() {
  folder = temporaryName("gtk-test");
  if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder");
  std::filesystem::permissions(folder, std::filesystem::perms(0755));
  keyfileFolder = folder + "/keyfiles";
  binFolder = folder + "/bin";
  recordFolder = folder + "/records";
  for (const std::string& name : {keyfileFolder, binFolder, recordFolder})
    std::filesystem::create_directory(name);
  std::filesystem::permissions(recordFolder, std::filesystem::perms(01777));

  const std::string recorder = binFolder + "/zor-network-permissions-handler";
  writeBytes(recorder, "#!/bin/sh\nrecord=" + recordFolder +
                           "/$$\n"
                           "for argument; do printf '[%s]' \"$argument\"; done >$record.part\n"
                           "mv $record.part $record\n");
  std::filesystem::permissions(recorder, std::filesystem::perms(0755));
  searchPath = std::getenv("PATH");
  setenv("PATH", (binFolder + ":" + searchPath).c_str(), 1);
  setenv("ZOR_NETWORKMANAGER_DEBUG_PATH", keyfileFolder.c_str(), 1);
}

KeyfileTest::~KeyfileTest() {
  setenv("PATH", searchPath.c_str(), 1);
  waitForChildren();
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

void KeyfileTest::loadKeyfiles() const {
  printedBy([] { NetworkManagerConfig::getInstance().initialize(NetworkManagerConfig::DEBUG); });
}

std::string KeyfileTest::requests() const {
  waitForChildren();
  std::multiset<std::string> records;
  for (const auto& entry : std::filesystem::directory_iterator(recordFolder)) {
    records.insert(readBytes(entry.path()));
    std::filesystem::remove(entry.path());
  }
  std::string text;
  for (const std::string& record : records) text += (text.empty() ? "" : " ") + record;
  return text;
}

void KeyfileTest::removePrivilegedProgram() const { setenv("PATH", recordFolder.c_str(), 1); }

UpdateRecordLock::UpdateRecordLock() {
  const std::string name = std::string(PATH) + ".lock";
  // Where another user has made the file, it may not be opened for creation.
  descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) descriptor = open(name.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0644);
  if (descriptor < 0 || flock(descriptor, LOCK_EX) != 0) throw std::runtime_error("no lock");
  std::filesystem::remove_all(PATH);
}

UpdateRecordLock::~UpdateRecordLock() {
  std::error_code ignored;
  std::filesystem::remove_all(PATH, ignored);
  close(descriptor);
}

}  // namespace gtk_test
