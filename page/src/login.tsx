import { useState, type FormEvent } from "react";
import { ApiError, post } from "./api/client";

/** Asks for the server's token; a cookie that scripts cannot read keeps it. */
export function Login({ onDone }: { onDone: () => void }) {
    const [token, setToken] = useState("");
    const [problem, setProblem] = useState("");
    const [busy, setBusy] = useState(false);

    async function submit(event: FormEvent) {
        event.preventDefault();
        setBusy(true);
        try {
            await post("session", { token: token.trim() });
            onDone();
        } catch (error) {
            const wrong = error instanceof ApiError && (error.status === 401 || error.status === 403);
            setProblem(wrong ? "This is not the token of this server" : (error as Error).message);
        } finally {
            setBusy(false);
        }
    }

    return (
        <form className="card login" onSubmit={(event) => void submit(event)}>
            <h1>Sign in</h1>
            <p>This server wants its token: the content of the file that it was started with (--token-file).</p>
            <label htmlFor="token">Token</label>
            <input
                id="token"
                type="password"
                autoComplete="current-password"
                autoFocus
                required
                value={token}
                onChange={(event) => setToken(event.target.value)}
                aria-invalid={problem !== ""}
                aria-describedby={problem === "" ? undefined : "token-problem"}
            />
            {problem !== "" && (
                <p className="error" id="token-problem" role="alert">
                    {problem}
                </p>
            )}
            <button className="primary" disabled={busy}>
                Sign in
            </button>
        </form>
    );
}
