# Shows the cloud volume in the user's file manager.
case ${QUILLBOX_VOLUMES:-} in
/*) exec xdg-open "$QUILLBOX_VOLUMES/Quillbox" ;;
*) exec xdg-open /Volumes/Quillbox ;;
esac
