# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What the program prints on standard output, step by step; a transcript is a sum of these."""

DEBUG = "Starting application in debug mode\n"
PRODUCTION = "Starting application for Halvorik\n"
CLOSED_WITHOUT_SAVING = "Closing program without saving\n"
RECORD_WRITTEN = "File created at /tmp/ethernetUpdateSettings\n"

ETHERNET_TOGGLED = "Ethernet button has changed\nCurrent Page: 0\n"
STATIC = ETHERNET_TOGGLED + "Ethernet static (manual)\n"
DYNAMIC = ETHERNET_TOGGLED + "Ethernet dynamic (auto)\n"
# The button that goes off reports first, then the one that comes on.
PICK_STATIC = DYNAMIC + STATIC
PICK_DYNAMIC = STATIC + DYNAMIC
PICK_WIFI_MODE = "Current Page: 1\nCurrent Page: 1\n"

SHOW_WIFI = "Switched to tab with index 1\nCurrent Page: 1\n"
_SHOW_ETHERNET = "Switched to tab with index 0\nCurrent Page: 0\n"
SHOW_ETHERNET_DYNAMIC = _SHOW_ETHERNET + "Ethernet dynamic (auto)\n"
SHOW_ETHERNET_STATIC = _SHOW_ETHERNET + "Ethernet static (manual)\n"


def discovery(directory, ethernet, wifi):
    """The search for the keyfiles. A name that is empty: there is none."""
    ethernet = ethernet and f"{directory}/{ethernet}"
    wifi = wifi and f"{directory}/{wifi}"
    return (f"NetworkManagerDirectoryPath: {directory}\n"
            + ("" if ethernet else "No Ethernet Connection Exists\n")
            + f"Ethernet Connection Path: {ethernet}\n"
            + ("" if wifi else "No Wifi Connection Exists\n")
            + f"Wifi Connection Path: {wifi}\n"
            f"Ethernet Path: {ethernet}\n"
            "Ethernet button has changed\n"
            f"Wifi Path: {wifi}\n"
            "Current Page: 0\n")


def dynamic_page(stored="auto"):
    """The Ethernet page of a keyfile whose method is taken as dynamic; None: no keyfile."""
    retrieved = "" if stored is None else (
        f"setSelectedEthernetMode called. Retrieved mode: {stored}\n"
        "ETHERNET_STATIC_MODE constant: manual\n")
    accepted = "Ethernet mode set to dynamic (auto).\n" if stored == "auto" else ""
    return (retrieved + accepted + DYNAMIC
            + "populateEthernetSettingsFromFile called with mode: auto\n"
            "ETHERNET_STATIC_MODE constant: manual\n"
            "Ethernet mode is dynamic; no manual settings to populate.\n")


def static_page(address):
    """The Ethernet page of a static keyfile; an empty address is an error, told elsewhere."""
    populated = (f"Read fullEthernetAddress: {address}\n"
                 "Populated Ethernet settings successfully.\n") if address else ""
    return ("setSelectedEthernetMode called. Retrieved mode: manual\n"
            "ETHERNET_STATIC_MODE constant: manual\n"
            "Ethernet mode set to static (manual).\n" + STATIC
            + "populateEthernetSettingsFromFile called with mode: manual\n"
            "ETHERNET_STATIC_MODE constant: manual\n"
            "Ethernet mode matches static.\n" + populated)


def start(directory, first_line=DEBUG, ethernet="ethernet.nmconnection", wifi="wlan0.nmconnection",
          page=dynamic_page()):
    """All from the first line until the window stands; by default with the sample keyfiles."""
    return first_line + discovery(directory, ethernet, wifi) + page


def address_check(text, valid=True):
    """The check of one address."""
    return (f"Validating IP Address: {text}\n"
            f"IP Address validation result: {'Valid' if valid else 'Invalid'}\n")


def ethernet_mode_check(stored, selected, created=None):
    """The comparison with the stored mode; created: the default keyfile made for another mode."""
    return (f"existing ethernet mode: {stored} selected mode: {selected}\n"
            + (f"New Ethernet connection file created at: {created}\n" if created else ""))


def wifi_mode_check(stored, selected, created=None):
    """The same for Wi-Fi."""
    return (f"existing wifi mode: {stored} selected mode: {selected}\n"
            + (f"New Wi-Fi connection file created at: {created}\n" if created else ""))


def ethernet_entries(address, mask, gateway, dns):
    """What is to be checked on the Ethernet page."""
    return (f"Ethernet IP Address being validated: {address}\n"
            f"Ethernet Subnet Mask being validated: {mask}\n"
            f"Ethernet Gateway being validated: {gateway}\n"
            f"Ethernet DNS Server being validated: {dns}\n")


def valid_ethernet_entries(address, mask, gateway, dns):
    """The whole check of entries that pass."""
    return (ethernet_entries(address, mask, gateway, dns) + address_check(address)
            + address_check(gateway) + (address_check(dns) if dns else "")
            + "Valid Ethernet IP, Subnet, Gateway, and Subnet Mask\n")


def wifi_entries(address, mask, password):
    """What is to be checked for an access point."""
    return (f"IP Address being validated: {address}\n"
            f"Subnet Mask being validated: {mask}\n"
            f"Wifi Password being validated: {password}\n")


def access_point_saved(address, mask, password):
    """The check of an access point's entries that pass, and the writing."""
    return (wifi_entries(address, mask, password) + address_check(address)
            + "Valid IP, Subnet, and password\n"
            "Wifi Device name: wlan0\n" + address_check(address))
