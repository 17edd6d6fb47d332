# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
SUMMARY = "Settings window for a device's wired and wireless connection"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=f5bba3a61442a809a0d486c4d7008efc"

DEPENDS = "gtkmm4"

# The source that this layer stands in.
EXTERNALSRC = "${@os.path.realpath(d.getVar('FILE_DIRNAME') + '/../../../..')}"

inherit externalsrc features_check meson pkgconfig systemd useradd

# The paths of the example's units are for /usr.
REQUIRED_DISTRO_FEATURES = "systemd usrmerge"

EXTRA_OEMESON = "-Dtests=none -Dprivileged_example=service"

# The example of a privileged program, which a device may replace by its own.
PACKAGES =+ "${PN}-privileged-example"

SYSTEMD_PACKAGES = "${PN}-privileged-example"
SYSTEMD_SERVICE:${PN}-privileged-example = "zor-network-restore.service zor-network.socket"

USERADD_PACKAGES = "${PN}-privileged-example"
GROUPADD_PARAM:${PN}-privileged-example = "--system zor-network"

FILES:${PN} += "${datadir}/icons ${datadir}/metainfo"
FILES:${PN}-privileged-example = " \
    ${bindir}/zor-network-permissions-handler \
    ${libexecdir}/zor-network-permissions-handler \
    ${sysconfdir}/NetworkManager/conf.d/zor-network.conf \
    ${systemd_system_unitdir} \
"

RRECOMMENDS:${PN} = "networkmanager"
RDEPENDS:${PN}-privileged-example = "networkmanager networkmanager-nmcli"
