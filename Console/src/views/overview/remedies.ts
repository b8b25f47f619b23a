/// What to do about a problem, by a part of its text.
const REMEDIES: [RegExp, string][] = [
    [/could not be started .*tries again/, "Free the port or change the port or the address of the service. The host starts the service by itself."],
    [/cannot use TLS/, "Mend the file of the certificate or the key. The host starts the service by itself."],
    [/cannot listen on|failed to start/, "Free the port or change the port or the address of the service, then enable it again."],
    [/serves every machine that reaches it/, "List the clients that may connect, or let the service listen on 127.0.0.1."],
    [/failed to stop/, "Restart the host, and send the log to the author of the service."],
    [/refused new parameters/, "Mend the cause that the text names, then set the parameters again."],
    [/Control drops detected/, "Use fewer or faster clients, or a lower rate. The problem disappears at the next start of the scan."],
    [/Sparkplug MQTT has no session/, "Check the address of the MQTT server, and whether it runs. The service connects by itself."],
    [/trail cannot be written/, "Make room on the disk or mend the rights of the file. The host writes the waiting entries by itself."],
    [/cannot be saved/, "Make room on the disk. The host tries again until a save succeeds."],
    [/cannot be loaded/, "Load another job, or upload a good one. The job that was loaded stays loaded."],
    [/is damaged/, "Check the disk. The host uses the readable part, and keeps the damaged file at the next save."],
    [/was refused/, "Check the plug-in that the text names. The other services run."],
    [/not encrypted/, "Start the host with --https in place of --insecure."],
    [/has not ended within/, "Check the scanner. If the problem stays, restart the host."],
    [/does not come to an end|fails over its metrics|gets no more results/, "Disable the service and enable it again. If the problem stays, restart the host."],
    [/certificate/, "Renew the certificate before it ends."],
    [/reader of the log/, "Let the program that reads the log go on. Control continues."],
];

const OTHERWISE = "The page “Operation” of the manual explains each problem.";

export function remedyFor(text: string): string {
    return REMEDIES.find(([pattern]) => pattern.test(text))?.[1] ?? OTHERWISE;
}
