// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/messagedialog.h>
#include <gtkmm/notebook.h>
#include <gtkmm/window.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/NetworkManagerConfig.h"
#include "settings/ethernet.h"
#include "widgets/EthernetGrid.h"
#include "widgets/WifiGrid.h"

/**
 * The application's window: a page for the wired and a page for the wireless connection, filled
 * from the keyfiles, and the buttons that save the visible page or leave without saving.
 *
 * Its operations are public because each is a step with a contract of its own: it can be run, and
 * is tested, without the ones around it. They work on the members below, and print what they do.
 */
class NetworkManagerWindow : public Gtk::Window {
 public:
  NetworkManagerWindow();
  NetworkManagerWindow(const NetworkManagerWindow&) = delete;
  NetworkManagerWindow& operator=(const NetworkManagerWindow&) = delete;
  ~NetworkManagerWindow() override;

  // ---- Construction (window.cc)

  void buildLayout();
  void connectSignals();

  // ---- What is visible, and how large the window is (view.cc)

  /**
   * Stores a mode for the visible page, whatever group of buttons it comes from, and shows what
   * belongs to it. Handler of all five mode buttons.
   */
  void updateModeView(std::string_view mode);

  /** Shows again what belongs to the stored mode of the visible page. */
  void refreshCurrentPage();

  /** Handler of the notebook. */
  void onSwitchPage(Gtk::Widget* page, guint pageNumber);

  /** Hide or show the boxes of a page. That of the access point is hidden, but not shown again. */
  void hideWifiWidgets();
  void showWifiWidgets();
  void hideEthernetWidgets();
  void showEthernetWidgets();

  // ---- From the keyfiles into the entries (settings.cc)

  /** Takes mode and mode button from the keyfile; anything but "manual" counts as "auto". */
  void setSelectedEthernetMode();

  /** Fills the entries of a static address; for a dynamic one only empties that of the DNS. */
  void populateEthernetSettingsFromFile();

  /** Fills address, mask and channel of the access point; the channel of another band is "Auto". */
  void populateWifiSettingsFromFile();

  /** Fills SSID and password again from the keyfile of the start. */
  void resetWifiCredentials();

  // ---- From the entries into the keyfiles (settings.cc)

  /** Builds the stored address and the octets of the update record from the entries. */
  void createEthernetAddress();

  /** Writes the rows of a mode and fills the update record; does neither for another word. */
  void writeEthernetSettingsToFile(const std::string& mode);

  /** Writes the update record for the privileged program. Follows writeEthernetSettingsToFile(). */
  void writeEthernetUpdateFile();

  /** Builds the stored address from the texts that validateWifiValues() kept. */
  void createApAddress();

  /** Writes the rows of a mode, access point or client; nothing for another word. */
  void writeWifiSettingsToFile(const std::string& mode);

  /** Returns, and prints, the wireless interface's name as the page shows it. */
  Glib::ustring getWifiDeviceName();

  // ---- Which keyfile it is (settings.cc)

  /**
   * Creates a default file where there is none, for an access point or a client. Nobody calls this:
   * a save makes the missing file itself. It is offered all the same.
   */
  void createWifiFileIfMissing();

  /**
   * Replace a keyfile whose stored mode is not the selected one by a default one, which is edited
   * from then on. One of another name is given the default one's first, and is edited where the
   * default one cannot be made; it stays under its own name where that is not to be had.
   */
  void resetWifiFileOnModeChange();
  void resetEthernetFileOnModeChange();

  /** Fills SSID and password again, removes the Wi-Fi keyfile and forgets its path. */
  void removeWifiSettingsFile();

  // ---- Checks (validation.cc)

  /** Check the entries of a page. On false a dialog names the bad ones. */
  bool validateWifiValues();
  bool validateEthernetValues();

  // ---- The two ways out (save.cc)

  /**
   * Saves the visible page, hides the window and has the privileged program apply the change. What
   * cannot be saved leaves the window open. Handler of the save button.
   */
  void saveAndExit();

  /** Asks for a rollback, in debug mode too, and hides the window. Handler of the exit button. */
  void closeWithoutSaving();

 private:
  static constexpr int ETHERNET_PAGE = 0;
  static constexpr int WIFI_PAGE = 1;

  /** What the entries of the Wi-Fi page held when they were last checked. */
  struct WifiTexts {
    Glib::ustring ipAddress;
    Glib::ustring subnetMask;
    Glib::ustring password;
  };

  /** The same of the Ethernet page. Building the stored address takes the first three anew. */
  struct EthernetTexts {
    Glib::ustring ipAddress;
    Glib::ustring subnetMask;
    Glib::ustring gateway;
    Glib::ustring dnsServer;
  };

  /** The verdicts of a page's last check, which sets all of them. */
  struct WifiVerdicts {
    bool ipAddress = false;
    bool subnetMask = false;
    bool password = false;
  };
  struct EthernetVerdicts {
    bool ipAddress = false;
    bool subnetMask = false;
    bool gateway = false;
    bool dnsServer = false;
  };

  // The steps of the operations above.
  void updateEthernetView(std::string_view mode);
  void updateWifiView(std::string_view mode);
  void populateStaticAddress();
  bool storesOtherMode(std::string_view kind, const std::string& mode, const char* section,
                       const char* key, const std::string& path) const;
  void writeKeyfile(const std::string& path, const std::vector<KeyfileEntry>& entries);
  bool saveEthernet();
  bool saveWifi();
  std::string readConnectionId(const std::string& path) const;
  void showInvalidValues(std::unique_ptr<Gtk::MessageDialog>& dialog, const Glib::ustring& message,
                         const Glib::ustring& detail);

  NetworkManagerConfig* config;
  Gtk::Box mainBox;
  Gtk::Box buttonBox;
  EthernetGrid ethernetGrid;
  WifiGrid wifiGrid;
  Gtk::Button button1;  // these two are never placed; keep them
  Gtk::Button button2;
  Gtk::Button exitButton;
  Gtk::Button saveButton;
  Gtk::Notebook notebook;
  sigc::connection switchPageConnection;

  // Each dialog stays until the next one of its kind.
  std::unique_ptr<Gtk::MessageDialog> wifiDialog;
  std::unique_ptr<Gtk::MessageDialog> ethernetDialog;
  EthernetUpdateRecord ethernetUpdateRecord;

  // The keyfiles being edited; empty for none.
  std::string wifiPath;
  std::string ethernetPath;

  // The stored form of the addresses; empty when the entries make no address.
  std::string storedEthernetAddress;
  std::string storedApAddress;

  std::string selectedWifiMode;
  std::string selectedEthernetMode;
  int currentPage = ETHERNET_PAGE;  // as told by the notebook

  WifiTexts wifiTexts;
  EthernetTexts ethernetTexts;
  WifiVerdicts wifiValid;
  EthernetVerdicts ethernetValid;
};
