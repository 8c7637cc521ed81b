# fish completion for kolum. The program itself knows what may follow: "kolum complete -- WORD..."
# prints a line that may contain "files" (file names fit too) and "nospace", then for each candidate
# its word, a tab and its meaning.

function __kolum_answer
    set -l words (commandline -opc)
    set -l program $words[1]
    set -e words[1]
    command $program complete -- $words (commandline -ct) 2>/dev/null
end

function __kolum_takes_files
    set -l answer (__kolum_answer)
    string match -q '*files*' -- $answer[1]
end

function __kolum_words
    set -l answer (__kolum_answer)
    set -e answer[1]
    string join \n -- $answer
end

complete -c kolum -n 'not __kolum_takes_files' -f
complete -c kolum -a '(__kolum_words)'
