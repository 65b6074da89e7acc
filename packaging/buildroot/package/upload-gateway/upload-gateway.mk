################################################################################
#
# upload-gateway
#
################################################################################

UPLOAD_GATEWAY_VERSION = 1.0.0
UPLOAD_GATEWAY_SITE = $(BR2_EXTERNAL_UPLOAD_GATEWAY_PATH)/../..
UPLOAD_GATEWAY_SITE_METHOD = local
UPLOAD_GATEWAY_DEPENDENCIES = host-pkgconf cjson
UPLOAD_GATEWAY_CONF_OPTS = \
	-DBUILD_TESTING=OFF \
	-DUNIT_MODEL=$(call qstrip,$(BR2_PACKAGE_UPLOAD_GATEWAY_MODEL)) \
	-DGATEWAY_CGI_DIR=$(call qstrip,$(BR2_PACKAGE_UPLOAD_GATEWAY_CGI_DIR))

$(eval $(cmake-package))
