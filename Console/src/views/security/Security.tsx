import { useObservable } from "../../client/observable";
import { mayActAs, type Role, session } from "../../client/rest";
import { route } from "../../client/route";
import { Tabs } from "../../parts/basics";
import { Certificates } from "./Certificates";
import { Sessions } from "./Sessions";
import { Tokens } from "./Tokens";
import { TrailPart } from "./Trail";
import { Users } from "./Users";

const PARTS: [string, string, Role][] = [
    ["users", "Users", "administrator"], ["tokens", "Tokens", "administrator"], ["sessions", "Sessions", "viewer"],
    ["certificates", "Certificates", "viewer"], ["trail", "Trail", "engineer"],
];

/// Who may use the host, and what was done.
export function Security() {
    const { item } = useObservable(route);
    const present = useObservable(session);
    const part = PARTS.find(([name]) => name === item)?.[0] ?? "users";
    const needed = PARTS.find(([name]) => name === part)?.[2] ?? "administrator";
    const isOpen = present !== null && present !== "needed" && present.caller === "local";
    return (
        <div class="stack">
            {isOpen && <p class="warning">Everybody on this machine is an administrator, until there is a user or a token.</p>}
            <Tabs label="Parts" view="security" chosen={part} parts={PARTS.map(([id, title]) => ({ id, title }))} />
            {!mayActAs(needed) ? <p>This needs the role {needed}.</p>
                : part === "users" ? <Users />
                : part === "tokens" ? <Tokens />
                : part === "sessions" ? <Sessions />
                : part === "certificates" ? <Certificates />
                : <TrailPart />}
        </div>
    );
}
