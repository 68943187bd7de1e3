################################################################################
#
# zelta-ip
#
################################################################################

ZELTA_IP_VERSION = 1.0.0
ZELTA_IP_SITE = $(realpath $(BR2_EXTERNAL_ZELTA_IP_PATH)/../..)
ZELTA_IP_SITE_METHOD = local

# Documents are taken off the target later; the settings are copied while they are there.
define ZELTA_IP_INSTALL_SETTINGS
	mkdir -p $(TARGET_DIR)/home/main-user/.ip_config
	cp $(TARGET_DIR)/usr/share/doc/zelta-ip/examples/* \
		$(TARGET_DIR)/home/main-user/.ip_config
endef
ZELTA_IP_POST_INSTALL_TARGET_HOOKS += ZELTA_IP_INSTALL_SETTINGS

define ZELTA_IP_USERS
	main-user 500 main-user 500 * /home/main-user /bin/sh - User of the device
endef

# Applied after the users, whose home directory would be theirs otherwise.
define ZELTA_IP_PERMISSIONS
	/usr/bin/zelta-ip f 4755 0 0 - - - - -
	/home/main-user d 755 0 0 - - - - -
	/home/main-user/.ip_config d 750 0 500 - - - - -
	/home/main-user/.ip_config/bluetooth-auto f 640 0 500 - - - - -
	/home/main-user/.ip_config/bluetooth-manual f 640 0 500 - - - - -
	/home/main-user/.ip_config/gprs-auto f 640 0 500 - - - - -
	/home/main-user/.ip_config/gprs-config f 600 0 500 - - - - -
	/home/main-user/.ip_config/gprs-connect f 640 0 500 - - - - -
	/home/main-user/.ip_config/gprs-disconnect f 640 0 500 - - - - -
	/home/main-user/.ip_config/gprs-manual f 640 0 500 - - - - -
	/home/main-user/.ip_config/usb-auto f 640 0 500 - - - - -
	/home/main-user/.ip_config/usb-manual f 640 0 500 - - - - -
	/home/main-user/.ip_config/wifi-auto f 640 0 500 - - - - -
	/home/main-user/.ip_config/wifi-manual f 640 0 500 - - - - -
	/home/main-user/.ip_config/wlan-config f 640 0 500 - - - - -
endef

$(eval $(cmake-package))
