# Functions that ./run and tools/tour share: the folder that the program is started in, and the demo server.
# To be sourced; needs "set -euo pipefail" and the current directory at the root of the sources.

# start_demo_server <build folder> [<option>...]: sets pop_port and smtp_port, and with an option for encryption
# pops_port and smtps_port too. The server ends with this shell, however that ends, because its standard input
# closes then.
start_demo_server() {
    coproc demo_server {
        exec "$1/demo/brindlewake_demo_server" --mail demo/mailbox --until-stdin-closes "${@:2}"
    }
    # Kept under a name of its own: the shell forgets the other one as soon as the server has ended.
    demo_server_pid=$demo_server_PID
    if ! read -r -t 20 _ pop_port _ smtp_port _ pops_port _ smtps_port <&"${demo_server[0]}"; then
        echo "The demo server did not start." >&2
        return 1
    fi
}

stop_demo_server() {
    kill "$demo_server_pid" 2>/dev/null || true
    wait "$demo_server_pid" 2>/dev/null || true
}

# settings_text: the settings file for the demo server, line by line as the setup window writes it. pop_server and
# smtp_server name the servers otherwise than by their ports in clear.
settings_text() {
    printf '%s\r\n' \
        "ShowSetup=yes" \
        "[MailServer Info]" \
        "POPServer=${pop_server-127.0.0.1:$pop_port}" \
        "SMTPServer=${smtp_server-127.0.0.1:$smtp_port}" \
        "DomainName=example.org" \
        "[Institution Properties]" \
        "Institution=Example School" \
        "[Application Options]" \
        "PlayWav=yes" \
        "ShowDatabase=yes" \
        "SendAttachments=yes" \
        'SaveDirectory=C:\' \
        "AllowPrinting=yes" \
        "SaveCopy=no" \
        "ShowGetMail=yes" \
        "GetMailEvery=0" \
        "LDAPServer=directory.example.org" \
        "LDAPSearchBase=c=us" \
        "AddressLookup=Personal Address Book"
}

# prepare_program_folder <folder>: all that the program reads from its current directory.
prepare_program_folder() {
    mkdir -p "$1"
    cp assets/tolk.jpg assets/Gotmail.wav "$1/"
    settings_text >"$1/tolk.ini"
}
