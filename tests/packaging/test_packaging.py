"""What a firmware build gets: one stripped, hardened program, needing libc and cJSON alone."""

import os
import pathlib
import re
import shutil
import subprocess

import pytest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
BUILDS = {
    "amd64": REPOSITORY / os.environ.get("GATEWAY_BUILD_DIR", "build"),
    "armhf": REPOSITORY / os.environ.get("GATEWAY_ARMHF_BUILD_DIR", "build-armhf"),
}
FLASH_BUDGET = 100 * 1024
MODELS = ("ZAVO-ENC-U300-DA", "ZAVO-ENC-E100-DA", "ZAVO-DEC-D200-DA")


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    assert result.returncode == 0, f"{command}\n{result.stdout}{result.stderr}"
    return result.stdout


@pytest.fixture(params=BUILDS)
def architecture(request):
    if not (BUILDS[request.param] / "upload_gateway").exists():
        pytest.fail(f"there is no build for {request.param} in {BUILDS[request.param]}")
    return request.param


@pytest.fixture
def build(architecture):
    return BUILDS[architecture]


@pytest.fixture
def program(build):
    return build / "upload_gateway"


def needed_libraries(program):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-dW", program))


def test_each_models_program_needs_libc_and_cjson_and_nothing_else(build):
    for program in ("upload_gateway", *(f"models/{model}/upload_gateway" for model in MODELS)):
        libraries = {name for name in needed_libraries(build / program) if not name.startswith("ld-linux")}
        assert libraries == {"libc.so.6", "libcjson.so.1"}


def test_the_program_is_hardened(program):
    header = run("readelf", "-hW", program)
    segments = run("readelf", "-lW", program)
    dynamic = run("readelf", "-dW", program)
    symbols = run("readelf", "--dyn-syms", "-W", program)
    assert re.search(r"Type:\s+DYN", header)
    assert "PIE" in re.search(r"FLAGS_1.*", dynamic)[0]
    assert "NOW" in re.search(r"FLAGS_1.*", dynamic)[0]
    assert "GNU_RELRO" in segments
    assert re.search(r"GNU_STACK.*", segments)[0].split()[-2] == "RW"
    assert "__stack_chk_fail" in symbols
    assert "__snprintf_chk" in symbols or "__vsnprintf_chk" in symbols
    assert "TEXTREL" not in dynamic


def test_the_program_is_stripped(program):
    assert ".symtab" not in run("readelf", "-SW", program)


def test_the_appliances_programs_fit_their_flash_budget():
    for model in MODELS:
        assert (BUILDS["armhf"] / "models" / model / "upload_gateway").stat().st_size <= FLASH_BUDGET


def test_installing_puts_one_program_where_it_is_told_and_nothing_else(build, tmp_path):
    # The folder is the build's own choice, so this needs a build of its own configuration only.
    cache = (build / "CMakeCache.txt").read_text()
    folder = re.search(r"^GATEWAY_CGI_DIR:STRING=(.*)$", cache, re.M)[1]
    prefix = re.search(r"^CMAKE_INSTALL_PREFIX:PATH=(.*)$", cache, re.M)[1]
    run("cmake", "--install", build, env={**os.environ, "DESTDIR": str(tmp_path)})
    installed = [path for path in tmp_path.rglob("*") if not path.is_dir()]
    assert installed == [tmp_path / prefix.lstrip("/") / folder / "upload_gateway"]
    assert os.access(installed[0], os.X_OK)


def test_the_debian_package_holds_the_program_and_names_what_it_needs(architecture, build, tmp_path):
    run("cpack", "-B", tmp_path, cwd=build)
    (package,) = tmp_path.glob("*.deb")
    control = run("dpkg-deb", "-f", package)
    assert f"Architecture: {architecture}\n" in control
    depends = re.search(r"^Depends: (.*)$", control, re.M)[1]
    assert {word.split()[0] for word in depends.split(", ")} == {"libc6", "libcjson1"}
    files = run("dpkg-deb", "-c", package)
    assert len(re.findall(r"^-rwxr-xr-x root/root .*/upload_gateway$", files, re.M)) == 1
    # The newest libc symbol that the program uses must be in the libc that the package asks for.
    versions = re.findall(r"GLIBC_(\d+)\.(\d+)", run("readelf", "-VW", build / "upload_gateway"))
    newest = max((int(major), int(minor)) for major, minor in versions)
    asked = re.search(r"libc6 \(>= (\d+)\.(\d+)\)", depends)
    assert newest <= (int(asked[1]), int(asked[2]))
    report = subprocess.run(["lintian", "--allow-root", str(package)], capture_output=True, text=True)
    serious = [line for line in report.stdout.splitlines() if line.startswith(("E:", "W:"))]
    assert serious == []


def build_by_hand(options, tmp_path):
    """Does what a firmware build system's CMake class does, with the host's compiler."""
    run("cmake", "-S", REPOSITORY, "-B", tmp_path / "work", "-DCMAKE_BUILD_TYPE=Release",
        "-DCMAKE_INSTALL_PREFIX=/usr", *options)
    run("cmake", "--build", tmp_path / "work", "-j", "2")
    run("cmake", "--install", tmp_path / "work",
        env={**os.environ, "DESTDIR": str(tmp_path / "target")})
    return {str(path.relative_to(tmp_path / "target"))
            for path in (tmp_path / "target").rglob("*") if not path.is_dir()}


BUILDROOT_STAND_IN = """
qstrip = $(strip $(subst ",,$(1)))
BR2_EXTERNAL_UPLOAD_GATEWAY_PATH = {external}
BR2_PACKAGE_UPLOAD_GATEWAY_MODEL = "ZAVO-DEC-D200-DA"
BR2_PACKAGE_UPLOAD_GATEWAY_CGI_DIR = "/www/cgi-bin"
include {external}/external.mk
print:
\t@echo 'site=$(UPLOAD_GATEWAY_SITE)'
\t@echo 'method=$(UPLOAD_GATEWAY_SITE_METHOD)'
\t@echo 'dependencies=$(UPLOAD_GATEWAY_DEPENDENCIES)'
\t@echo 'options=$(UPLOAD_GATEWAY_CONF_OPTS)'
"""


def test_the_buildroot_package_builds_the_chosen_model(tmp_path):
    external = REPOSITORY / "packaging/buildroot"
    makefile = tmp_path / "Makefile"
    makefile.write_text(BUILDROOT_STAND_IN.replace("{external}", str(external)))
    printed = dict(line.split("=", 1) for line in
                   run("make", "-f", makefile, "print").splitlines() if "=" in line)
    assert pathlib.Path(printed["site"]).resolve() == REPOSITORY
    assert printed["method"] == "local"
    assert set(printed["dependencies"].split()) == {"host-pkgconf", "cjson"}
    installed = build_by_hand(printed["options"].split(), tmp_path)
    assert installed == {"www/cgi-bin/upload_gateway"}
    assert b"ZAVO-DEC-D200-DA\0" in (tmp_path / "target/www/cgi-bin/upload_gateway").read_bytes()


def test_every_buildroot_option_that_the_package_reads_is_defined():
    folder = REPOSITORY / "packaging/buildroot/package/upload-gateway"
    read = set(re.findall(r"BR2_PACKAGE_UPLOAD_GATEWAY\w+", (folder / "upload-gateway.mk").read_text()))
    defined = set(re.findall(r"^config (\w+)", (folder / "Config.in").read_text(), re.M))
    assert read and read <= defined


def recipe_variables(text):
    """The assignments of a recipe, with its own variables filled in."""
    text = re.sub(r"\\\n", " ", text)
    found = dict(re.findall(r'^([\w:${}]+)\s*\??\+?=\s*"([^"]*)"', text, re.M))
    found["PN"] = "upload-gateway"
    def fill(value):
        while re.search(r"\$\{(\w+)\}", value):
            value = re.sub(r"\$\{(\w+)\}", lambda match: found[match[1]], value)
        return value
    return {fill(name): fill(value) for name, value in found.items()}


def test_the_yocto_recipe_builds_and_packages_the_program(tmp_path):
    (recipe,) = (REPOSITORY / "packaging/yocto").rglob("*.bb")
    variables = recipe_variables(recipe.read_text())
    assert variables["DEPENDS"].split() == ["cjson"]
    installed = build_by_hand(variables["EXTRA_OECMAKE"].split(), tmp_path)
    assert {"/" + name for name in installed} == {variables["FILES:upload-gateway"]}


def test_package_definitions_carry_the_version_of_the_project():
    version = re.search(r"^project\(upload_gateway VERSION ([\d.]+)",
                        (REPOSITORY / "CMakeLists.txt").read_text(), re.M)[1]
    makefile = (REPOSITORY / "packaging/buildroot/package/upload-gateway/upload-gateway.mk").read_text()
    assert f"UPLOAD_GATEWAY_VERSION = {version}\n" in makefile
    assert list((REPOSITORY / "packaging/yocto").rglob(f"upload-gateway_{version}.bb"))


def test_every_tool_of_these_tests_is_there():
    for tool in ("readelf", "cpack", "dpkg-deb", "lintian", "make", "cmake"):
        assert shutil.which(tool), tool
