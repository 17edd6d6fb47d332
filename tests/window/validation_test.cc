// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "window_test.h"

namespace {

const std::string PASSWORD_LABEL =
    "Password (must at least 8 characters and contain no special characters)";

class Validation : public WindowTest {
 protected:
  bool validateEthernet() { return validate(&NetworkManagerWindow::validateEthernetValues); }
  bool validateWifi() { return validate(&NetworkManagerWindow::validateWifiValues); }

 private:
  bool validate(bool (NetworkManagerWindow::*check)()) {
    bool valid = false;
    printedBy([&] { valid = (window.get()->*check)(); });
    return valid;
  }
};

// ---- Verdicts

TEST_F(Validation, NamesTheBadEthernetFieldsInOrder) {
  open(STATIC_KEYFILE, "", ETHERNET);
  const std::string ip = "192.168.1.10";
  const std::string mask = "255.255.255.0";
  const struct {
    std::vector<std::string> texts;
    std::string detail;  // empty for a valid form
  } cases[] = {
      {{ip, mask, "192.168.1.1", "8.8.8.8"}, ""},
      {{ip, mask, "192.168.1.1", ""}, ""},
      {{ip, mask, "192.168.1.1", " \t"}, ""},
      {{" " + ip + "\t", " " + mask + " ", " 192.168.1.1 ", " 8.8.8.8 "}, ""},
      {{ip, "0.0.0.0", "192.168.1.1", ""}, ""},
      {{ip, mask, "", "8.8.8.8"}, "Invalid Gateway"},
      {{"", mask, "192.168.1.1", ""}, "Invalid IP Address"},
      {{ip, "255.0.255.0", "192.168.1.1", ""}, "Invalid Subnet Mask"},
      {{ip, mask, "192.168.1.1", "8.8.8"}, "Invalid DNS Server"},
      {{ip, mask, "192.168.1.256", "x"}, "Invalid Gateway, DNS Server"},
      {{"1", "2", "3", "4"}, "Invalid IP Address, Subnet Mask, Gateway, DNS Server"},
      {{"\u0661.2.3.4", "\u00E9", "\u20AC", "\u6F22"},
       "Invalid IP Address, Subnet Mask, Gateway, DNS Server"},
  };
  for (const auto& wanted : cases) {
    fillEthernet(wanted.texts[0], wanted.texts[1], wanted.texts[2], wanted.texts[3]);
    EXPECT_EQ(validateEthernet(), wanted.detail.empty()) << wanted.texts[0];
    if (wanted.detail.empty()) {
      EXPECT_TRUE(dialogs().empty());
      continue;
    }
    EXPECT_EQ(dialogs().at(0)->property_secondary_text().get_value().raw(), wanted.detail);
    open(STATIC_KEYFILE, "", ETHERNET);
  }
}

TEST_F(Validation, NamesTheBadWifiFieldsInOrder) {
  open("", AP_KEYFILE, WIFI);
  const struct {
    std::string ipAddress;
    std::string mask;
    std::string password;
    std::string detail;  // empty for a valid form
  } cases[] = {
      {"10.42.0.1", "255.255.255.0", "password", ""},
      {" 10.42.0.1\t", " 255.255.255.0 ", "passwor ", ""},
      {"10.42.0.1", "255.255.255.255", "A-b_C 19", ""},
      {"10.42.0.1", "255.255.255.0", "passwor", "Invalid " + PASSWORD_LABEL},
      {"10.42.0.1", "255.255.255.0", "password!", "Invalid " + PASSWORD_LABEL},
      {"10.42.0.1", "255.255.255.0", "pass\tword", "Invalid " + PASSWORD_LABEL},
      {"10.42.0.1", "255.255.255.0", "passw\u00F6rd", "Invalid " + PASSWORD_LABEL},
      {"10.42.0", "255.255.255.0", "password", "Invalid IP Address"},
      {"10.42.0.1", "255.255.0.255", "password", "Invalid Subnet Mask"},
      {"", "", "password", "Invalid IP Address, Subnet Mask"},
      {"", "", "", "Invalid IP Address, Subnet Mask, " + PASSWORD_LABEL},
  };
  for (const auto& wanted : cases) {
    fillAccessPoint(wanted.ipAddress, wanted.mask, 0);
    fillWifi("any", wanted.password);
    EXPECT_EQ(validateWifi(), wanted.detail.empty()) << wanted.password;
    if (wanted.detail.empty()) {
      EXPECT_TRUE(dialogs().empty());
      continue;
    }
    EXPECT_EQ(dialogs().at(0)->property_secondary_text().get_value().raw(), wanted.detail);
    open("", AP_KEYFILE, WIFI);
  }
}

// ---- Printed lines

TEST_F(Validation, PrintsEachEthernetText) {
  open(STATIC_KEYFILE, "", ETHERNET);
  fillEthernet(" 1.2.3.4 ", "x", "1.2.3", "8.8.8.8");
  const std::string texts = lines(
      {"Ethernet IP Address being validated:  1.2.3.4 ", "Ethernet Subnet Mask being validated: x",
       "Ethernet Gateway being validated: 1.2.3", "Ethernet DNS Server being validated: 8.8.8.8"});
  EXPECT_EQ(printedBy([this] { window->validateEthernetValues(); }),
            texts + checked("1.2.3.4", "Valid") + checked("1.2.3", "Invalid") +
                checked("8.8.8.8", "Valid"));
}

TEST_F(Validation, PrintsEachWifiTextAndAValidForm) {
  open("", AP_KEYFILE, WIFI);
  const std::string texts = lines(
      {"IP Address being validated: 10.42.0.5", "Subnet Mask being validated: 255.255.255.0"});
  const auto validate = [this] { window->validateWifiValues(); };
  EXPECT_EQ(printedBy(validate), texts + "Wifi Password being validated: password1\n" +
                                     checked("10.42.0.5", "Valid") +
                                     "Valid IP, Subnet, and password\n");
  fillWifi("", "short");
  EXPECT_EQ(printedBy(validate),
            texts + "Wifi Password being validated: short\n" + checked("10.42.0.5", "Valid"));
}

TEST_F(Validation, PrintsAnyTextByteForByte) {
  open(STATIC_KEYFILE, AP_KEYFILE, ETHERNET);
  const std::string text = "\u00E9\u20AC\u6F22\U0001F600 %s \"\\";
  fillEthernet(text, text, text, text);
  EXPECT_EQ(printedBy([this] { window->validateEthernetValues(); }),
            lines({"Ethernet IP Address being validated: " + text,
                   "Ethernet Subnet Mask being validated: " + text,
                   "Ethernet Gateway being validated: " + text,
                   "Ethernet DNS Server being validated: " + text}) +
                checked(text, "Invalid") + checked(text, "Invalid") + checked(text, "Invalid"));
  fillAccessPoint(text, text, 0);
  fillWifi(text, text);
  EXPECT_EQ(printedBy([this] { window->validateWifiValues(); }),
            lines({"IP Address being validated: " + text, "Subnet Mask being validated: " + text,
                   "Wifi Password being validated: " + text}) +
                checked(text, "Invalid"));
}

// ---- Dialogs

class Dialog : public Validation {
 protected:
  Gtk::MessageDialog& failEthernet() {
    fillEthernet("", "", "", "");
    EXPECT_FALSE(validateEthernet());
    return *dialogs().at(0);
  }
};

void expectModalMessage(Gtk::MessageDialog& dialog, Gtk::Window& window, const std::string& text,
                        const std::string& detail) {
  EXPECT_EQ(dialog.property_text().get_value().raw(), text);
  EXPECT_EQ(dialog.property_secondary_text().get_value().raw(), detail);
  EXPECT_FALSE(dialog.property_use_markup().get_value());
  EXPECT_FALSE(dialog.property_secondary_use_markup().get_value());
  EXPECT_EQ(dialog.property_message_type().get_value(), Gtk::MessageType::INFO);
  EXPECT_EQ(dialog.get_transient_for(), &window);
  EXPECT_TRUE(dialog.get_modal());
  EXPECT_TRUE(dialog.get_hide_on_close());
  EXPECT_TRUE(dialog.get_visible());

  Gtk::Widget* ok = dialog.get_widget_for_response(Gtk::ResponseType::OK);
  ASSERT_NE(ok, nullptr);
  EXPECT_EQ(findWidget<Gtk::Button>(dialog, [=](Gtk::Button& button) { return &button != ok; }),
            nullptr)
      << "there is a second button";
}

TEST_F(Dialog, IsModalWithOneButton) {
  open(STATIC_KEYFILE, AP_KEYFILE, ETHERNET);
  expectModalMessage(failEthernet(), *window, "You entered invalid Ethernet Credentials",
                     "Invalid IP Address, Subnet Mask, Gateway");
  open(STATIC_KEYFILE, AP_KEYFILE, WIFI);
  fillAccessPoint("1", "2", 0);
  ASSERT_FALSE(validateWifi());
  expectModalMessage(*dialogs().at(0), *window, "You entered invalid Wifi Credentials",
                     "Invalid IP Address, Subnet Mask");
}

TEST_F(Dialog, HidesOnAnyResponseAndLeavesTheWindowAsItWas) {
  for (const int response : {int{Gtk::ResponseType::OK}, int{Gtk::ResponseType::CANCEL}, 42}) {
    open(STATIC_KEYFILE, "", ETHERNET);
    fillEthernet("typed", "", "", "");
    ASSERT_FALSE(validateEthernet());
    Gtk::MessageDialog& dialog = *dialogs().at(0);
    dialog.response(response);
    EXPECT_FALSE(dialog.get_visible());
    EXPECT_EQ(dialogs(), std::vector{&dialog}) << "it is kept";
    EXPECT_TRUE(window->get_visible());
    EXPECT_EQ(ethernetTexts(), (std::vector<std::string>{"typed", "", "", ""}));
  }
}

TEST_F(Dialog, OfTheSameKindIsReplacedOldOneFirst) {
  open(STATIC_KEYFILE, "", ETHERNET);
  Gtk::MessageDialog& old = failEthernet();
  bool oldOneGoes = false;
  bool newOneIsThere = false;
  old.signal_destroy().connect([&] {
    oldOneGoes = true;
    for (const Gtk::MessageDialog* dialog : dialogs()) newOneIsThere |= dialog != &old;
  });
  fillEthernet("1.1.1.1", "255.0.0.0", "1.1.1.2", "no");
  ASSERT_FALSE(validateEthernet());
  ASSERT_EQ(dialogs().size(), 1U);
  EXPECT_EQ(dialogs()[0]->property_secondary_text().get_value().raw(), "Invalid DNS Server");
  EXPECT_TRUE(oldOneGoes);
  EXPECT_FALSE(newOneIsThere);
}

TEST_F(Dialog, OfWifiIsReplacedAndHidesOnAnyResponse) {
  open("", AP_KEYFILE, WIFI);
  for (const char* mask : {"1", "2"}) {
    fillAccessPoint("10.42.0.1", mask, 0);
    ASSERT_FALSE(validateWifi());
    ASSERT_EQ(dialogs().size(), 1U);
    dialogs()[0]->response(42);
    EXPECT_FALSE(dialogs()[0]->get_visible());
  }
}

TEST_F(Dialog, OfEachKindHasItsOwnPlace) {
  open(STATIC_KEYFILE, AP_KEYFILE, ETHERNET);
  Gtk::MessageDialog& ethernetDialog = failEthernet();
  fillAccessPoint("1", "2", 0);
  ASSERT_FALSE(validateWifi());
  EXPECT_EQ(dialogs().size(), 2U);
  for (Gtk::MessageDialog* dialog : dialogs()) {
    if (dialog != &ethernetDialog) dialog->response(Gtk::ResponseType::OK);
  }
  EXPECT_TRUE(ethernetDialog.get_visible()) << "each response hides its own dialog";
}

TEST_F(Dialog, GoesWithTheWindow) {
  open(STATIC_KEYFILE, "", ETHERNET);
  failEthernet();
  window.reset();
  EXPECT_TRUE(dialogs().empty());
}

}  // namespace
