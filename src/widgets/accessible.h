// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/checkbutton.h>
#include <gtkmm/dropdown.h>
#include <gtkmm/label.h>
#include <gtkmm/messagedialog.h>
#include <gtkmm/notebook.h>

// What a screen reader and the keyboard need and the toolkit (4.8) leaves out: it gives some of its
// widgets no name, or that of their type. A label names what it is the mnemonic label of, also
// without an underlined letter.

/**
 * Names the button and the list within a drop-down by its label, and each row by its text; the
 * choice describes the button. To be called before the drop-down gets its model, and so its rows.
 */
void nameDropDown(Gtk::DropDown& dropDown, const Gtk::Label& label);

/**
 * Lets the list open at the chosen row; at the first, the arrow keys would start from there. What
 * is taken from it is the row with the focus, which a screen reader has told.
 */
void openAtChoice(Gtk::DropDown& dropDown);

/** Keeps arrow keys from a check button of no group: the toolkit takes them for its only choice. */
void ignoreArrowKeys(Gtk::CheckButton& button);

/** Names each tab by its label, and the notebook, which has the tabs' focus, by the current one. */
void nameTabs(Gtk::Notebook& notebook);

/**
 * Names a dialog by its message and describes it by its second text; its button is named without
 * the mark of a mnemonic.
 */
void nameDialog(Gtk::MessageDialog& dialog);
