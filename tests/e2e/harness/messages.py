"""The program's messages, in the words and the order users see them."""

LOADED_FOR = {
    "linux_arm7": "Linux_Arm7 Sensor",
    "linux_arm64": "Linux Arm64 Sensor",
    "ombix": "Linux Arm64 Ombix",
}

NO_STOCK = "TaVekUtil: No Stock packages specified. Using default stock images.\n"
DISCOVERY_FAILED = "TaVekUtil: Failed finding stock packages.\n"
NOTHING_TO_PROCESS = "TaVekUtil: Could not find any packages to process.\n"
PACKAGES_FAILED = "TaVekUtil: Failed to load vek manifest file from vek package(s).\n"
PLATFORM_FILES_FAILED = "TaVekUtil: Failed to load vekapp platform files.\n"
CONFIGURATION_FAILED = "TaVekUtil: Failed to load config file.\n"
UPGRADE_FAILED = "TaVekUtil: Failed injecting files into upgrade package.\n"
PROCESS_FAILED = "TaVekUtil: Failed process upgrade package.\n"


# ---- Standard output -------------------------------------------------------------------------------------


def processing(archive):
    return f"\nTaVekUtil: Processing Archive: {archive}\n"


def loaded(platform, path):
    return f"TaVekUtil:    - Loaded file for {LOADED_FOR[platform]}: {path}\n"


def copied(destination):
    return f"TaVekUtil:    - Loaded file for Windows: {destination}\n"


def directory_missing(path):
    return f'Directory does not exists ("{path}"), skipping file.\n'


def removing(package):
    return f"\n\tTaVekUtil: Remove Package: {package}\n"


def skipping(path):
    return f"Skipping File: {path} - Not Found\n"


def unchanged(archive):
    return f"TaVekUtil:    - No libraries were loaded for: {archive}\n"


def saving(path):
    return f"TaVekUtil:    - Saving new package as: {path}\n"


def refused(detail):
    """The log entry of a plain file that is no container."""
    return "zArchive_Load: " + detail + "\n"


# ---- Standard error --------------------------------------------------------------------------------------


def injection_failed(message):
    return "TaVekUtil: Failed to inject library to archive. Error: " + message + "\n"


def extraction_failed(message):
    return "TaVekUtil: Failed to extract manifest file. Error: " + message + "\n"


def removal_failed(destination):
    return f"TaVekUtil: Failed Removing file from upgrade package: {destination}.\n"


def copy_failed(message):
    return "TaVekUtil: Failed injecting files into User Tools package: " + message + "\n"


def version_mismatch(host, package, built_for):
    return (
        "TaVekUtil: ERROR - Version for Upgrade package != Vek Package \n"
        f"TaVekUtil: ERROR - {host} != {package}({built_for})\n"
    )


def batch_failed(message, configuration="cfg.xml"):
    return (
        f"TaVekUtil: Failed updating upgrade packages using configuration file: {configuration} Error: "
        + message
        + "\n"
    )


def archive_failed(message):
    """The three lines of a batch that ends with an archive."""
    return UPGRADE_FAILED + PROCESS_FAILED + batch_failed(message)


# ---- Details of failed operations ------------------------------------------------------------------------


def no_file(path):
    return path + ": No such file or directory"


def no_member(name, archive="sensor.pkg"):
    return f"{archive}: no member {name}"


def no_element(name):
    return "there is no element " + name


def no_attribute(element, name):
    return f'<{element}> has no attribute "{name}"'


def text_too_long(element, capacity):
    return f"the text of <{element}> needs {capacity} bytes, {capacity - 1} are allowed"


def attribute_too_long(element, name, capacity):
    return f'the attribute "{name}" of <{element}> needs {capacity} bytes, {capacity - 1} are allowed'


def path_too_long(path, capacity=512):
    return f"{path}: longer than {capacity - 1} characters"
