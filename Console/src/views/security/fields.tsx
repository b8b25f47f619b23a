import { type Role, ROLES } from "../../client/rest";
import { Time } from "../../parts/basics";

/// A list of roles.
export function RoleSelect({ id, value, edit, label }: { id?: string; value: Role; edit: (role: Role) => void; label?: string }) {
    return (
        <select id={id} aria-label={label} value={value} onChange={(event) => edit(event.currentTarget.value as Role)}>
            {ROLES.map((role) => <option key={role} value={role}>{role}</option>)}
        </select>
    );
}

/// A time that may not have come yet.
export function Ago({ text }: { text: string | null | undefined }) {
    return text === null || text === undefined || text === "" ? <span class="quiet">never</span> : <Time ms={Date.parse(text)} />;
}

/// The head of a table whose last column has buttons.
export function Head({ titles, hasButtons = true }: { titles: string[]; hasButtons?: boolean }) {
    return (
        <thead>
            <tr>
                {titles.map((title) => <th key={title} scope="col">{title}</th>)}
                {hasButtons && <th scope="col"><span class="hidden">Change</span></th>}
            </tr>
        </thead>
    );
}
