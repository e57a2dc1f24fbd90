#compdef TaVekUtil TaVekUtil.exe
# Completion of TaVekUtil for zsh.

local -a single=(--archive --file --manifest) batch=(--config --platform)

_arguments -S \
    '(- *)'{-h,--help}'[print the usage text]' \
    "($single --config)--config[run the batch that a configuration describes]:configuration:_files -g '*.xml(-.)'" \
    "($single --platform)--platform[take the files of this platform]:platform:(linux_arm7 linux_arm64 ombix win all)" \
    "($batch --archive)--archive[work on this archive]:archive or installation directory:_files" \
    "($batch --manifest --file)--file[put this library into the archive]:library:_files" \
    "($batch --file --manifest)--manifest[write the manifest of the archive]:file to write:_files"
