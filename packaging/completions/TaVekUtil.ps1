# Completion of TaVekUtil for PowerShell. Load it from the profile:  . C:\tools\TaVekUtil\completions\TaVekUtil.ps1

Register-ArgumentCompleter -Native -CommandName 'TaVekUtil', 'TaVekUtil.exe' -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)

    $about = [ordered]@{
        '--config'   = 'Run the batch that a configuration describes'
        '--platform' = 'Take the files of this platform'
        '--archive'  = 'Work on this archive'
        '--file'     = 'Put this library into the archive'
        '--manifest' = 'Write the manifest of the archive'
        '--help'     = 'Print the usage text'
    }
    $platforms = 'linux_arm7', 'linux_arm64', 'ombix', 'win', 'all'

    # The word before the one that is being completed.
    $words = @($commandAst.CommandElements | ForEach-Object { $_.Extent.Text })
    $last = if ($wordToComplete) { $words.Count - 2 } else { $words.Count - 1 }
    $before = if ($last -ge 1) { $words[$last] } else { '' }

    if ($before -eq '--platform') {
        $platforms | Where-Object { $_ -like "$wordToComplete*" } | ForEach-Object {
            [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)
        }
    }
    elseif ($before -notin '--config', '--archive', '--file', '--manifest') {
        $about.Keys | Where-Object { $_ -like "$wordToComplete*" -and $words -notcontains $_ } | ForEach-Object {
            [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterName', $about[$_])
        }
    }
    # For a path nothing is answered, and PowerShell completes file names by itself.
}
