################################################################################
#
# zor-network-manager
#
################################################################################
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT

# The source that this tree stands in, without what was built there.
ZOR_NETWORK_MANAGER_SITE = $(BR2_EXTERNAL_ZOR_NETWORK_PATH)/../..
ZOR_NETWORK_MANAGER_SITE_METHOD = local
ZOR_NETWORK_MANAGER_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude '/build*'
ZOR_NETWORK_MANAGER_LICENSE = MIT
ZOR_NETWORK_MANAGER_LICENSE_FILES = LICENSE
ZOR_NETWORK_MANAGER_DEPENDENCIES = host-pkgconf gtkmm4
ZOR_NETWORK_MANAGER_CONF_OPTS = -Dtests=none

ifeq ($(BR2_PACKAGE_ZOR_NETWORK_MANAGER_PRIVILEGED_EXAMPLE),y)
ZOR_NETWORK_MANAGER_CONF_OPTS += -Dprivileged_example=service

define ZOR_NETWORK_MANAGER_USERS
	- - zor-network -1 * - - - Asks the privileged program
endef
else
ZOR_NETWORK_MANAGER_CONF_OPTS += -Dprivileged_example=none
endif

$(eval $(meson-package))
