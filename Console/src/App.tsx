import type { ComponentType } from "preact";
import { useEffect, useErrorBoundary, useRef } from "preact/hooks";
import { useClock, useObservable } from "./client/observable";
import { connection, logOut, sentenceOf, session } from "./client/rest";
import { hrefOf, route } from "./client/route";
import { NoticeBar, tellRefusal } from "./parts/basics";
import { Login } from "./views/login/Login";
import { Overview } from "./views/overview/Overview";
import { Events } from "./views/events/Events";
import { Jobs } from "./views/jobs/Jobs";
import { Live } from "./views/live/Live";
import { Metrics } from "./views/metrics/Metrics";
import { Registers } from "./views/registers/Registers";
import { Security } from "./views/security/Security";
import { Services } from "./views/services/Services";

interface View {
    name: string;
    title: string;
    component: ComponentType;
}

const VIEWS: View[] = [
    { name: "overview", title: "Overview", component: Overview },
    { name: "live", title: "Live", component: Live },
    { name: "services", title: "Services", component: Services },
    { name: "registers", title: "Registers", component: Registers },
    { name: "jobs", title: "Jobs", component: Jobs },
    { name: "events", title: "Events", component: Events },
    { name: "metrics", title: "Metrics", component: Metrics },
    { name: "security", title: "Security", component: Security },
];

export function App() {
    const present = useObservable(session);
    if (present === "needed") {
        return <Login />;
    }
    return <Shell />;
}

function Shell() {
    const { view: name } = useObservable(route);
    const view = VIEWS.find((one) => one.name === name);
    const heading = useRef<HTMLHeadingElement>(null);
    const title = view?.title ?? "Not found";
    useEffect(() => {
        document.title = `${title} – ZuControl`;
        if (document.activeElement instanceof HTMLAnchorElement) {
            heading.current?.focus({ preventScroll: true }); // a screen reader goes on at the new view
        }
    }, [title]);
    return (
        <>
            <a class="skip" href="#main" onClick={skip}>To the content</a>
            <TopBar />
            <Navigation present={name} />
            <main id="main" tabIndex={-1}>
                <h1 ref={heading} tabIndex={-1}>{title}</h1>
                {view === undefined ? <p>There is no view “{name}”. <a href={hrefOf("overview")}>To the overview</a></p> : <ViewFrame key={name} view={view} />}
            </main>
            <NoticeBar />
        </>
    );
}

/// A view. A fault in it leaves the rest of the page usable.
function ViewFrame({ view: { component: Content } }: { view: View }) {
    const [error, again] = useErrorBoundary();
    if (error === undefined) {
        return <Content />;
    }
    return (
        <div role="alert">
            <p class="refusal">This view cannot show what the host has sent: {sentenceOf(error)}</p>
            <button type="button" onClick={again}>Try again</button>
        </div>
    );
}

/// Moves the keyboard to the content; the address of the page stays that of the view.
function skip(event: Event): void {
    event.preventDefault();
    document.getElementById("main")?.focus();
}

function TopBar() {
    const present = useObservable(session);
    const user = present !== null && present !== "needed" ? present : null;
    return (
        <header class="topbar">
            <span class="product">ZuControl</span>
            <ConnectionState />
            {user?.user !== undefined && (
                <span class="user">
                    {user.user} <span class="quiet">({user.role})</span>
                    <button type="button" class="plain" onClick={() => void logOut().catch(tellRefusal)}>Log out</button>
                </span>
            )}
        </header>
    );
}

function ConnectionState() {
    const state = useObservable(connection);
    useClock(1_000);
    const seconds = Math.round((Date.now() - state.sinceMs) / 1000);
    return (
        <span class="connection" role="status">
            {state.isUp ? <span class="light good"><span class="sign" aria-hidden="true">●</span>Connected</span>
                : <span class="lost">No connection for <span class="number" aria-hidden="true">{seconds} s</span>. Values are old.</span>}
        </span>
    );
}

function Navigation({ present }: { present: string }) {
    return (
        <nav aria-label="Views">
            <ul>
                {VIEWS.map((view) => (
                    <li key={view.name}>
                        <a href={hrefOf(view.name)} aria-current={view.name === present ? "page" : undefined}>{view.title}</a>
                    </li>
                ))}
            </ul>
            <a class="notices" href="/ui/licences.txt" target="_blank" rel="noopener">Licences</a>
        </nav>
    );
}
