import { useState } from "preact/hooks";
import { useObservable } from "../../client/observable";
import { logIn, loginNotice, sentenceOf } from "../../client/rest";

/// Asks for name and password. Shown while the service admits no stranger.
export function Login() {
    const [refusal, setRefusal] = useState("");
    const [isBusy, setBusy] = useState(false);
    const notice = useObservable(loginNotice);
    const submit = (event: SubmitEvent) => {
        event.preventDefault();
        const form = new FormData(event.target as HTMLFormElement);
        setBusy(true);
        logIn(String(form.get("name")), String(form.get("password")))
            .catch((error: unknown) => setRefusal(sentenceOf(error)))
            .finally(() => setBusy(false));
    };
    return (
        <main class="login" id="main">
            <h1>ZuControl</h1>
            <form class="card" onSubmit={submit} aria-label="Log in">
                <h2>Log in</h2>
                {notice !== "" && <p class="warning notice-text">{notice}</p>}
                <label for="login-name">Name</label>
                <input id="login-name" name="name" autocomplete="username" required maxLength={64} />
                <label for="login-password">Password</label>
                <input id="login-password" name="password" type="password" autocomplete="current-password" required maxLength={256} />
                {refusal !== "" && <p class="refusal" role="alert">{refusal}</p>}
                <button type="submit" class="primary" disabled={isBusy}>Log in</button>
            </form>
        </main>
    );
}
