include $(sort $(wildcard $(BR2_EXTERNAL_UPLOAD_GATEWAY_PATH)/package/*/*.mk))
