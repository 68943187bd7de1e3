################################################################################
#
# zelta-ip
#
################################################################################

ZELTA_IP_VERSION = 1.0.0
ZELTA_IP_SITE = $(realpath $(BR2_EXTERNAL_ZELTA_IP_PATH)/../..)
ZELTA_IP_SITE_METHOD = local

define ZELTA_IP_INSTALL_SETTINGS
	mkdir -p $(TARGET_DIR)/home/main-user/.ip_config
	cp $(TARGET_DIR)/usr/share/zelta-ip/examples/*-auto \
		$(TARGET_DIR)/home/main-user/.ip_config
endef
ZELTA_IP_POST_INSTALL_TARGET_HOOKS += ZELTA_IP_INSTALL_SETTINGS

define ZELTA_IP_USERS
	main-user 500 main-user 500 * /home/main-user /bin/sh - User of the device
endef

# Applied after the users, whose home directory would be theirs otherwise, and after the overlays: root
# alone reads what they bring; of the IP settings, the shells of user 500 complete the names.
define ZELTA_IP_PERMISSIONS
	/usr/bin/zelta-ip f 4755 0 0 - - - - -
	/home/main-user d 755 0 0 - - - - -
	/home/main-user/.ip_config d 750 0 500 - - - - -
	/home/main-user/.ip_config r 600 0 500 - - - - -
	/home/main-user/.ip_config d 750 0 500 - - - - -
	/home/main-user/.ip_config/bluetooth-auto F 640 0 500 - - - - -
	/home/main-user/.ip_config/gprs-auto F 640 0 500 - - - - -
	/home/main-user/.ip_config/usb-auto F 640 0 500 - - - - -
	/home/main-user/.ip_config/wifi-auto F 640 0 500 - - - - -
endef

$(eval $(cmake-package))
