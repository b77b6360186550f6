import { StrictMode } from "react";
import { createRoot } from "react-dom/client";
import { App } from "./app";
import "./style/base.css";
import "./style/layout.css";
import "./style/controls.css";
import "./style/form.css";
import "./style/streams.css";
import "./style/calibration.css";
import "./style/events.css";

const root = document.getElementById("page");
if (root === null) throw new Error("the page has no place for the application");
createRoot(root).render(
    <StrictMode>
        <App />
    </StrictMode>,
);
