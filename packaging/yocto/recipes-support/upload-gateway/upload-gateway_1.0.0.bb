SUMMARY = "File-upload gateway of an AV-over-IP appliance family"
DESCRIPTION = "CGI program behind the upload button of the unit's web interface"
SECTION = "net"
LICENSE = "CLOSED"

# Point externalsrc at the checkout, for example in local.conf:
#   EXTERNALSRC:pn-upload-gateway = "/path/to/upload-gateway"
inherit cmake pkgconfig externalsrc

DEPENDS = "cjson"

# The machine's configuration names the model, and the folder its web server runs programs from.
UNIT_MODEL ?= "ZAVO-ENC-U300-DA"
GATEWAY_CGI_DIR ?= "/www/cgi-bin"

EXTRA_OECMAKE = " \
    -DBUILD_TESTING=OFF \
    -DUNIT_MODEL=${UNIT_MODEL} \
    -DGATEWAY_CGI_DIR=${GATEWAY_CGI_DIR} \
"

FILES:${PN} = "${GATEWAY_CGI_DIR}/upload_gateway"
INSANE_SKIP:${PN} += "already-stripped"
