// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/checkbutton.h>
#include <gtkmm/dropdown.h>
#include <gtkmm/label.h>
#include <gtkmm/messagedialog.h>
#include <gtkmm/notebook.h>

// What a screen reader, the keyboard and a finger need and the toolkit (4.8) leaves out: some of
// its widgets have no name, or that of their type. set_mnemonic_widget() gives a widget its label's
// name, also when no letter of the label is underlined.

/**
 * Names the button and the list within a drop-down by its label, and each row by its text; the
 * choice describes the button. To be called before the drop-down gets its model, and so its rows.
 */
void nameDropDown(Gtk::DropDown& dropDown, const Gtk::Label& label);

/**
 * Lets the list open at the chosen row: the toolkit opens it at the first, and the arrow keys would
 * start from there. What is taken is the row with the focus, which a screen reader has read out.
 */
void openAtChoice(Gtk::DropDown& dropDown);

/**
 * Lets the list open above the button, scrolling what is higher than so many pixels. Below it, the
 * list would leave the window, and a small screen with it: not every compositor prevents that.
 */
void openAbove(Gtk::DropDown& dropDown, int maximumHeight);

/**
 * Lets the list open when a finger is put down. The toolkit opens it when the finger is lifted, and
 * then has no touch to show the compositor, which closes the list at once (GTK 4.8, weston 10).
 */
void openAtTouch(Gtk::DropDown& dropDown);

/** Lets a check button that is in no group ignore the arrow keys: the toolkit would toggle it. */
void ignoreArrowKeys(Gtk::CheckButton& button);

/**
 * Names each tab by its label, and the notebook by that of the current tab: where a tab shows the
 * focus, it is the notebook that has it.
 */
void nameTabs(Gtk::Notebook& notebook);

/**
 * Gives the focus to the tab of each page that is opened, by whatever means. The toolkit would give
 * it to the page's first entry, which only shows something, unless it was on a tab before.
 */
void focusTabs(Gtk::Notebook& notebook);

/**
 * Names a dialog by its message and describes it by its second text; its button is named without
 * the mark of a mnemonic.
 */
void nameDialog(Gtk::MessageDialog& dialog);
