// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "widgets/accessible.h"

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/eventcontrollerkey.h>
#include <gtkmm/gestureclick.h>
#include <gtkmm/listitem.h>
#include <gtkmm/listview.h>
#include <gtkmm/popover.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/selectionmodel.h>
#include <gtkmm/signallistitemfactory.h>
#include <gtkmm/stringobject.h>
#include <gtkmm/togglebutton.h>

#include <vector>

namespace {

void setText(Gtk::Widget& widget, Gtk::Accessible::Property property, const Glib::ustring& text) {
  Glib::Value<Glib::ustring> value;
  value.init(Glib::Value<Glib::ustring>::value_type());
  value.set(text);
  widget.update_property(property, value);
}

/** All widgets within a widget, level by level. */
std::vector<Gtk::Widget*> partsOf(Gtk::Widget& whole) {
  std::vector<Gtk::Widget*> parts{&whole};
  for (std::size_t i = 0; i < parts.size(); ++i)
    for (Gtk::Widget* part = parts[i]->get_first_child(); part != nullptr;
         part = part->get_next_sibling())
      parts.push_back(part);
  parts.erase(parts.begin());
  return parts;
}

/** Names a row by its label, once it has one. */
void nameRow(const Glib::RefPtr<Gtk::ListItem>& item) {
  Gtk::Widget* content = item->get_child();
  Gtk::Widget* row = content != nullptr ? content->get_parent() : nullptr;
  if (row == nullptr) return;
  auto* label = dynamic_cast<Gtk::Label*>(content->get_first_child());
  if (label == nullptr) return;
  label->set_mnemonic_widget(*row);
  // The button holds a row too, that of the choice: the focus goes to the button alone.
  if (row->get_ancestor(Gtk::Button::get_base_type()) != nullptr) row->set_focusable(false);
}

/** Marks a row of a list that is about to be shown, gives it the focus and scrolls to it. */
void goToRow(guint position, Gtk::ListView& list) {
  // Closing the list without a choice has left the mark where the keys had moved it.
  if (const auto rows = list.get_model()) rows->select_item(position, true);
  Gtk::Widget* row = list.get_first_child();
  for (guint i = 0; row != nullptr && i < position; ++i) row = row->get_next_sibling();
  if (row != nullptr) row->grab_focus();
  // A list that is too long for the screen can be scrolled, but not before it has a size.
  list.add_tick_callback([&list, position](const Glib::RefPtr<Gdk::FrameClock>& /*clock*/) {
    if (!list.get_mapped()) return false;  // closed again by now
    if (list.get_height() == 0) return true;
    list.activate_action("list.scroll-to-item", Glib::Variant<guint32>::create(position));
    return false;
  });
}

}  // namespace

void nameDropDown(Gtk::DropDown& dropDown, const Gtk::Label& label) {
  for (Gtk::Widget* part : partsOf(dropDown)) {
    if (dynamic_cast<Gtk::ToggleButton*>(part) != nullptr ||
        dynamic_cast<Gtk::ListView*>(part) != nullptr)
      setText(*part, Gtk::Accessible::Property::LABEL, label.get_text());
    else
      // Never gets the focus, and has no name in newer toolkits (4.18). It is not null.
      part->set_focusable(false);  // NOLINT(clang-analyzer-core.CallAndMessage)
  }
  if (const auto factory =
          std::dynamic_pointer_cast<Gtk::SignalListItemFactory>(dropDown.get_factory()))
    factory->signal_bind().connect(sigc::ptr_fun(nameRow));  // at set-up there is no label yet

  dropDown.property_selected().signal_changed().connect([&dropDown] {
    const auto choice = std::dynamic_pointer_cast<Gtk::StringObject>(dropDown.get_selected_item());
    if (!choice) return;
    // In newer toolkits (4.18) the button is described by what describes the whole.
    for (Gtk::Widget* widget : {static_cast<Gtk::Widget*>(&dropDown), dropDown.get_first_child()})
      setText(*widget, Gtk::Accessible::Property::DESCRIPTION, choice->get_string());
  });
}

void openAtChoice(Gtk::DropDown& dropDown) {
  for (Gtk::Widget* part : partsOf(dropDown)) {
    auto* list = dynamic_cast<Gtk::ListView*>(part);
    if (list == nullptr) continue;
    // Next the popover would give the focus to the first row. It does so only when no row has it.
    list->signal_map().connect([&dropDown, list] { goToRow(dropDown.get_selected(), *list); });
    // The toolkit has just taken the marked row. Some keys, like Tab, move the focus to another row
    // and leave the mark behind: the row with the focus counts.
    list->signal_activate().connect([&dropDown](guint row) { dropDown.set_selected(row); });
  }
}

void openAbove(Gtk::DropDown& dropDown, int maximumHeight) {
  for (Gtk::Widget* part : partsOf(dropDown)) {
    if (auto* popover = dynamic_cast<Gtk::Popover*>(part))
      popover->set_position(Gtk::PositionType::TOP);
    if (auto* rows = dynamic_cast<Gtk::ScrolledWindow*>(part))
      rows->set_max_content_height(maximumHeight);
  }
}

void openAtTouch(Gtk::DropDown& dropDown) {
  auto* button = dynamic_cast<Gtk::ToggleButton*>(dropDown.get_first_child());
  if (button == nullptr) return;
  const auto touch = Gtk::GestureClick::create();
  touch->set_touch_only(true);
  touch->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
  touch->signal_pressed().connect(
      [button, gesture = touch.get()](int /*presses*/, double /*x*/, double /*y*/) {
        gesture->set_state(Gtk::EventSequenceState::CLAIMED);  // the button would close it again
        button->set_active(!button->get_active());
      });
  button->add_controller(touch);
}

void ignoreArrowKeys(Gtk::CheckButton& button) {
  const auto keys = Gtk::EventControllerKey::create();
  // The codes of the four keys follow one another: left, up, right, down.
  keys->signal_key_pressed().connect(
      [](guint key, guint /*code*/, Gdk::ModifierType /*state*/) {
        return (key >= GDK_KEY_Left && key <= GDK_KEY_Down) ||
               (key >= GDK_KEY_KP_Left && key <= GDK_KEY_KP_Down);
      },
      false);
  button.add_controller(keys);
}

void nameTabs(Gtk::Notebook& notebook) {
  for (int number = 0; number < notebook.get_n_pages(); ++number) {
    auto* label = dynamic_cast<Gtk::Label*>(notebook.get_tab_label(*notebook.get_nth_page(number)));
    if (label == nullptr || label->get_parent() == nullptr) continue;
    label->get_parent()->reset_property(Gtk::Accessible::Property::LABEL);  // each is called "Tab"
    label->set_mnemonic_widget(*label->get_parent());
  }
  const auto nameNotebook = [&notebook] {
    Gtk::Widget* page = notebook.get_nth_page(notebook.get_current_page());
    if (page != nullptr)
      setText(notebook, Gtk::Accessible::Property::LABEL, notebook.get_tab_label_text(*page));
  };
  nameNotebook();
  notebook.property_page().signal_changed().connect(nameNotebook);
}

void focusTabs(Gtk::Notebook& notebook) {
  notebook.property_page().signal_changed().connect([&notebook] { notebook.grab_focus(); });
  // A click moves the focus once more when the page is there, but not if it was on a tab before.
  for (int number = 0; number < notebook.get_n_pages(); ++number) {
    Gtk::Widget* tab = notebook.get_tab_label(*notebook.get_nth_page(number))->get_parent();
    const auto click = Gtk::GestureClick::create();
    click->signal_pressed().connect(
        [&notebook](int /*presses*/, double /*x*/, double /*y*/) { notebook.grab_focus(); });
    tab->add_controller(click);
  }
}

void nameDialog(Gtk::MessageDialog& dialog) {
  setText(dialog, Gtk::Accessible::Property::LABEL, dialog.property_text().get_value());
  setText(dialog, Gtk::Accessible::Property::DESCRIPTION,
          dialog.property_secondary_text().get_value());
  Gtk::Widget* button = dialog.get_widget_for_response(Gtk::ResponseType::OK);
  if (button != nullptr) button->reset_property(Gtk::Accessible::Property::LABEL);
}
