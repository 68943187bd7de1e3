include $(sort $(wildcard $(BR2_EXTERNAL_ZELTA_IP_PATH)/package/*/*.mk))
