# Completion of TaVekInspect for PowerShell. The program itself is asked for its commands and their flags.
# Load it from the profile:  . C:\tools\TaVekUtil\completions\TaVekInspect.ps1

Register-ArgumentCompleter -Native -CommandName 'TaVekInspect', 'TaVekInspect.exe' -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)

    $words = @($commandAst.CommandElements | ForEach-Object { $_.Extent.Text })
    # How many words stand before the one that is being completed.
    $count = if ($wordToComplete) { $words.Count - 1 } else { $words.Count }

    $offered = @()
    if ($count -eq 1) {
        $usage = & $words[0] --help 2>$null
        $offered = @($usage | ForEach-Object { if ($_ -match '^  TaVekInspect ([a-z]+) ') { $Matches[1] } })
        $offered += '--help', '--version'
    }
    elseif ($words[$count - 1] -eq '--platform') {
        $offered = 'linux_arm7', 'linux_arm64', 'ombix', 'win', 'all'
    }
    elseif ($wordToComplete -like '-*') {
        $usage = & $words[0] $words[1] --help 2>$null | Where-Object { $_ -like 'Usage:*' }
        $offered = @([regex]::Matches("$usage", '--[a-z]+') | ForEach-Object { $_.Value }) + '--help'
    }
    # For a path nothing is answered, and PowerShell completes file names by itself.
    $offered | Where-Object { $_ -like "$wordToComplete*" } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)
    }
}
