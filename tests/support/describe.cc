// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/dropdown.h>
#include <gtkmm/entry.h>
#include <gtkmm/frame.h>
#include <gtkmm/notebook.h>
#include <gtkmm/stringlist.h>

#include <array>
#include <set>

#include "support/widgets.h"

namespace {

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

std::string describe(Gtk::Widget& widget, int levels) {
  std::string text;
  describeInto(text, widget, "", "", levels);
  return text;
}
